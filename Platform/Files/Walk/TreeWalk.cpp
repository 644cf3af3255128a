#include "Platform/Files/Walk/TreeWalk.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <dirent.h>

namespace tidemar {

void TreeWalk::run(FileDescriptor root, const DirectoryIdentity& identity) {
  enter({.descriptor = std::move(root), .identity = identity, .pending = {}});
  while (!_stack.isEmpty()) {
    auto& pending = _stack.top().pending;
    if (!pending.empty()) {
      const PendingDirectory next = std::move(pending.back());
      pending.pop_back();
      descend(next);
    } else if (const int lost = _stack.pop(); lost != 0) {
      _handler.failed(lost);
    }
  }
}

void TreeWalk::enter(OpenDirectory directory) {
  _stack.push(std::move(directory));
  try {
    readTop();
  } catch (const std::system_error& error) {
    _handler.failed(error.code().value());
  }
}

void TreeWalk::readTop() {
  const int directory = _stack.top().descriptor.get();
  _reader.start(directory);
  const bool hasList = _hiddenNames == HiddenNames::told && _reader.lists(".hidden").value_or(true);
  const HiddenList hidden = hasList ? HiddenList::ofDirectory(directory) : HiddenList();
  while (const auto entry = _reader.next())
    visit(*entry, hidden);
}

void TreeWalk::visit(const DirectoryReader::Entry& entry, const HiddenList& hidden) {
  OpenDirectory& directory = _stack.top();
  const bool isHidden = hidden.hides(entry.name);
  if (entry.type == DT_DIR) {
    directory.pending.push_back({entry.name, isHidden});
    return;
  }
  EntryValues values{};
  const int parent = directory.descriptor.get();
  if (const int code = readEntryValues(parent, entry.name, values); code != 0) {
    _handler.failed(code);
  } else if (isDirectory(values)) {
    directory.pending.push_back({entry.name, isHidden});
  } else if (isBoundary(values, directory.identity)) {
    _handler.failed(EXDEV);
  } else {
    _handler.entry({entry.name, _stack.depth(), values, isHidden, parent, -1});
  }
}

void TreeWalk::descend(const PendingDirectory& directory) {
  const OpenDirectory& above = _stack.top();
  const int parent = above.descriptor.get();
  OpenDirectory child;
  EntryValues values{};
  const DirectoryOpening opening = openDirectoryWithValues(
      parent, directory.name.c_str(), above.identity, child.descriptor, values);
  if (!opening.hasValues) return _handler.failed(opening.code);

  _handler.entry({directory.name.c_str(), _stack.depth(), values, directory.isHidden, parent,
                  child.descriptor.get()});
  if (opening.code != 0) return _handler.failed(opening.code);
  child.identity = identityOf(values);
  enter(std::move(child));
}

}  // namespace tidemar
