#include "Platform/Files/Walk/DirectoryStack.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

/// How many of the innermost directories stay open. Trees are rarely deeper, so that hardly a
/// directory is opened twice.
constexpr std::size_t openDirectories = 16;

}  // namespace

int openDirectory(int parent, const char* name, FileDescriptor& result) noexcept {
  result = FileDescriptor(openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  return result ? 0 : errno;
}

FileDescriptor openParent(const FileURL& url, const std::string& operation) {
  const std::string_view name = url.lastPathComponent();
  const bool namesAnEntry = !name.empty() && name != "/" && name != "." && name != "..";
  if (!namesAnEntry || url.path().find('\0') != std::string::npos)
    throw PlatformError(operation, url, EINVAL);
  const FileURL parent = url.deletingLastPathComponent();
  FileDescriptor descriptor(open(parent.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor) throw PlatformError(operation, url, errno);
  return descriptor;
}

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

FileURL DirectoryStack::url() const {
  std::string path = _root.path();
  for (std::size_t i = 1; i < _directories.size(); ++i) {
    if (path.back() != '/') path += '/';
    path += _directories[i].name;
  }
  return FileURL(std::move(path));
}

}  // namespace tidemar
