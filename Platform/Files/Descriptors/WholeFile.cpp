#include "Platform/Files/Descriptors/WholeFile.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/PlatformError.h"

namespace tidemar::WholeFile {
namespace {

FileURL behindLinks(const FileURL& file) {
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(file.path().c_str(), nullptr),
                                                         std::free);
  return path ? FileURL(path.get()) : file;
}

/// Answers whether all of it was written and flushed; else errno tells why.
bool writeAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return fsync(descriptor) == 0;
}

}  // namespace

std::optional<std::string> read(const FileURL& file) {
  const FileDescriptor opened(::open(file.path().c_str(), O_RDONLY | O_CLOEXEC));
  if (!opened) {
    if (errno == ENOENT) return std::nullopt;
    throw PlatformError("read", file, errno);
  }
  std::string content;
  std::array<char, 16384> buffer{};
  while (true) {
    const ssize_t count = ::read(opened.get(), buffer.data(), buffer.size());
    if (count == 0) return content;
    if (count > 0) {
      content.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      throw PlatformError("read", file, errno);
    }
  }
}

void replace(const FileURL& file, std::string_view content) {
  const FileURL target = behindLinks(file);
  std::string temporaryPath = target.path() + ".XXXXXX";
  FileDescriptor temporary(mkostemp(temporaryPath.data(), O_CLOEXEC));
  if (!temporary) throw PlatformError("write", file, errno);
  if (!writeAll(temporary.get(), content) ||
      rename(temporaryPath.c_str(), target.path().c_str()) != 0) {
    const int code = errno;
    unlink(temporaryPath.c_str());
    throw PlatformError("write", file, code);
  }
  // The rename may be lost in a crash without this, which would only bring the old file back: no
  // reason to report a failure of what is done.
  const FileDescriptor directory(::open(target.deletingLastPathComponent().path().c_str(),
                                        O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory) fsync(directory.get());
}

}  // namespace tidemar::WholeFile
