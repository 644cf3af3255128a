#include "Platform/Files/Descriptors/DescriptorPath.h"

#include <array>
#include <cerrno>
#include <climits>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/PlatformError.h"

namespace tidemar {

FileURL pathOfDescriptor(int directory, const FileURL& url, const std::string& operation) {
  const std::string link = "/proc/self/fd/" + std::to_string(directory);
  std::array<char, PATH_MAX> path{};
  const ssize_t size = readlink(link.c_str(), path.data(), path.size());
  if (size < 0) throw PlatformError(operation, url, errno);
  // A directory out of reach of this process's root has a path without a slash in front.
  if (size == 0 || path[0] != '/') throw PlatformError(operation, url, ENOENT);
  return FileURL(std::string(path.data(), static_cast<std::size_t>(size)));
}

bool leadsTo(const FileURL& path, int directory) {
  EntryValues there{};
  EntryValues opened{};
  return readValuesAt(path.path().c_str(), there) == 0 &&
         readEntryValues(directory, "", opened) == 0 && identityOf(there) == identityOf(opened);
}

FileDescriptor openMountRoot(int directory, const FileURL& url, const std::string& operation) {
  const auto open = [&](int from, const char* name) {
    FileDescriptor opened(openat(from, name, O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened) throw PlatformError(operation, url, errno);
    return opened;
  };
  const auto read = [&](const FileDescriptor& opened) {
    EntryValues values{};
    if (const int code = readEntryValues(opened.get(), "", values); code != 0) {
      throw PlatformError(operation, url, code);
    }
    return values;
  };

  FileDescriptor current = open(directory, ".");
  EntryValues values = read(current);
  while ((values.stx_attributes & STATX_ATTR_MOUNT_ROOT) == 0) {
    FileDescriptor parent = open(current.get(), "..");
    const EntryValues parentValues = read(parent);
    // In a changed root the way up ends without a mount.
    if (identityOf(parentValues) == identityOf(values)) break;
    current = std::move(parent);
    values = parentValues;
  }
  return current;
}

}  // namespace tidemar
