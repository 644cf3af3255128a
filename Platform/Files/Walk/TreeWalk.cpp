#include "Platform/Files/Walk/TreeWalk.h"

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include <dirent.h>

namespace tidemar {

void TreeWalk::run(int parent, const char* name) {
  EntryValues parentValues{};
  EntryValues values{};
  OpenDirectory root;
  int code = readEntryValues(parent, "", parentValues);
  if (code == 0) code = openDirectory(parent, name, root.descriptor);
  if (code == 0) code = readEntryValues(root.descriptor.get(), "", values);
  if (code != 0) return failed(_stack.url(), code);
  if (isBoundary(values, identityOf(parentValues))) return refuseBoundary(_stack.url());

  root.identity = identityOf(values);
  enter(std::move(root));
  while (!_stack.isEmpty()) {
    auto& pending = _stack.top().pending;
    if (!pending.empty()) {
      const PendingDirectory next = std::move(pending.back());
      pending.pop_back();
      descend(next);
    } else if (const int lost = _stack.pop(); lost != 0) {
      failed(_stack.url(), lost);
    }
  }
}

void TreeWalk::enter(OpenDirectory directory) {
  _stack.push(std::move(directory));
  try {
    readTop();
  } catch (const std::system_error& error) {
    failed(_stack.url(), error.code().value());
  }
}

void TreeWalk::readTop() {
  const int directory = _stack.top().descriptor.get();
  _reader.start(directory);
  const HiddenList hidden =
      _reader.lists(".hidden").value_or(true) ? HiddenList::ofDirectory(directory) : HiddenList();
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
  if (const int code = readEntryValues(directory.descriptor.get(), entry.name, values); code != 0) {
    return failed(_stack.url(entry.name), code);
  }
  if (isDirectory(values)) {
    directory.pending.push_back({entry.name, isHidden});
  } else if (isBoundary(values, directory.identity)) {
    refuseBoundary(_stack.url(entry.name));
  } else {
    _handler.entry({entry.name, _stack.depth(), values, isHidden, -1});
  }
}

void TreeWalk::descend(const PendingDirectory& directory) {
  const OpenDirectory& parent = _stack.top();
  const char* name = directory.name.c_str();
  OpenDirectory child;
  child.name = directory.name;
  const int openCode = openDirectory(parent.descriptor.get(), name, child.descriptor);

  // A directory that can't be opened still has values of its own.
  EntryValues values{};
  const int valuesCode = openCode == 0 ? readEntryValues(child.descriptor.get(), "", values)
                                       : readEntryValues(parent.descriptor.get(), name, values);
  if (valuesCode != 0) return failed(_stack.url(name), valuesCode);
  if (isBoundary(values, parent.identity)) return refuseBoundary(_stack.url(name));

  _handler.entry({name, _stack.depth(), values, directory.isHidden, child.descriptor.get()});
  if (openCode != 0) return failed(_stack.url(name), openCode);
  child.identity = identityOf(values);
  enter(std::move(child));
}

void TreeWalk::failed(const FileURL& url, int code) {
  _handler.failed(PlatformError("read", url, code));
}

void TreeWalk::refuseBoundary(const FileURL& url) {
  _handler.failed(PlatformError("read", url, EXDEV, "another volume begins there"));
}

}  // namespace tidemar
