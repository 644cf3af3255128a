#include "TidemarKit/Engine/RunGate.h"

namespace tidemar {

RunGate::Passage::Passage(RunGate& gate) : _gate(gate) {
  const std::lock_guard lock(_gate._mutex);
  ++_gate._passages;
}

RunGate::Passage::~Passage() {
  const std::lock_guard lock(_gate._mutex);
  --_gate._passages;
  _gate._allLeft.notify_all();
}

bool RunGate::isClosed() const {
  const std::lock_guard lock(_mutex);
  return _isClosed;
}

void RunGate::close() {
  const std::lock_guard lock(_mutex);
  _isClosed = true;
}

void RunGate::waitUntilLeft() {
  std::unique_lock lock(_mutex);
  _allLeft.wait(lock, [this] { return _passages == 0; });
}

}  // namespace tidemar
