#include "Platform/Files/Walk/DirectoryStack.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

namespace tidemar {
namespace {

/// How many of the innermost directories stay open. Trees are rarely deeper, so that hardly a
/// directory is opened twice.
constexpr std::size_t openDirectories = 16;

}  // namespace

void DirectoryStack::push(OpenDirectory directory) {
  _directories.push_back(std::move(directory));
  if (_directories.size() > openDirectories + 1) {
    _directories[_directories.size() - 1 - openDirectories].descriptor.close();
  }
}

int DirectoryStack::pop() {
  const OpenDirectory left = std::move(_directories.back());
  _directories.pop_back();
  if (_directories.empty() || top().descriptor) return 0;

  const int code = reopenTop(left.descriptor);
  if (code != 0) {
    while (!top().descriptor)
      _directories.pop_back();
  }
  return code;
}

int DirectoryStack::reopenTop(const FileDescriptor& child) {
  FileDescriptor parent(openat(child.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!parent) return errno;
  EntryValues values{};
  if (const int code = readEntryValues(parent.get(), "", values); code != 0) return code;
  // The directory was moved elsewhere meanwhile: its parent is none of this tree's.
  if (identityOf(values) != top().identity) return ESTALE;
  top().descriptor = std::move(parent);
  return 0;
}

}  // namespace tidemar
