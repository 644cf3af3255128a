#include "TidemarKit/Engine/RunGate.h"

namespace tidemar {

RunGate::Passage::Passage(RunGate& gate) : _gate(gate) {
  const std::lock_guard lock(_gate._mutex);
  ++_gate._passages;
}

RunGate::Passage::~Passage() {
  const std::lock_guard lock(_gate._mutex);
  --_gate._passages;
  _gate._someLeft.notify_all();
}

RunGate::Command::~Command() {
  const std::lock_guard lock(_gate._mutex);
  --_gate._commands;
  _gate._someLeft.notify_all();
}

void RunGate::acceptCommand() {
  const std::lock_guard lock(_mutex);
  ++_commands;
}

bool RunGate::isClosed(std::int64_t folderID) const {
  const std::lock_guard lock(_mutex);
  return _isClosed || _heldBack.contains(folderID);
}

void RunGate::holdBack(std::int64_t folderID) {
  const std::lock_guard lock(_mutex);
  _heldBack.insert(folderID);
}

void RunGate::letGo(std::int64_t folderID) {
  const std::lock_guard lock(_mutex);
  const auto held = _heldBack.find(folderID);
  if (held != _heldBack.end()) _heldBack.erase(held);
}

void RunGate::close() {
  const std::lock_guard lock(_mutex);
  _isClosed = true;
}

void RunGate::shut() {
  const std::lock_guard lock(_mutex);
  _isClosed = _isShut = true;
}

bool RunGate::isShut() const {
  const std::lock_guard lock(_mutex);
  return _isShut;
}

bool RunGate::waitUntilLeft(std::chrono::milliseconds patience) {
  return waitForNone(_passages, patience);
}

bool RunGate::waitForCommands(std::chrono::milliseconds patience) {
  return waitForNone(_commands, patience);
}

bool RunGate::waitForNone(const int& count, std::chrono::milliseconds patience) {
  std::unique_lock lock(_mutex);
  return _someLeft.wait_for(lock, patience, [&] { return count == 0; });
}

}  // namespace tidemar
