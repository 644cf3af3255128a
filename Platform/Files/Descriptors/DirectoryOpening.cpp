#include "Platform/Files/Descriptors/DirectoryOpening.h"

#include <cerrno>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

}  // namespace

int openDirectory(int parent, const char* name, FileDescriptor& result) noexcept {
  open_how how{};
  how.flags = flags;
  how.resolve = RESOLVE_NO_XDEV;
  result = FileDescriptor(static_cast<int>(syscall(SYS_openat2, parent, name, &how, sizeof how)));
  // Some containers refuse the call; its caller compares the values all the same.
  if (!result && (errno == ENOSYS || errno == EPERM))
    result = FileDescriptor(openat(parent, name, flags));
  return result ? 0 : errno;
}

DirectoryOpening openDirectoryWithValues(int parent, const char* name,
                                         const DirectoryIdentity& parentIdentity,
                                         FileDescriptor& result, EntryValues& values) noexcept {
  int code = openDirectory(parent, name, result);
  if (code == EXDEV) return {false, code};

  // A directory that can't be opened still has values of its own.
  const int valuesCode =
      code == 0 ? readEntryValues(result.get(), "", values) : readEntryValues(parent, name, values);
  if (valuesCode != 0) code = valuesCode;
  if (valuesCode == 0 && isBoundary(values, parentIdentity)) code = EXDEV;
  if (code != 0) result.close();
  return {.hasValues = valuesCode == 0 && code != EXDEV, .code = code};
}

FileDescriptor openDirectoryAt(const FileURL& url, const std::string& operation) {
  if (url.path().find('\0') != std::string::npos) throw PlatformError(operation, url, EINVAL);
  FileDescriptor directory(
      open(url.path().c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
  if (!directory) throw PlatformError(operation, url, errno);
  return directory;
}

}  // namespace tidemar
