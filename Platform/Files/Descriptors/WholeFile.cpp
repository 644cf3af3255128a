#include "Platform/Files/Descriptors/WholeFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/CanonicalPath.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/ReadWrite.h"
#include "Platform/PlatformError.h"

namespace tidemar::WholeFile {
namespace {

FileURL behindLinks(const FileURL& file) {
  const auto path = canonicalPath(file);
  return path ? FileURL(*path) : file;
}

/// Writes a file that has another name until it is whole. Answers 0, or an errno value.
int write(int temporary, const std::string& temporaryPath, const FileURL& target,
          std::string_view content) {
  if (const int code = writeAll(temporary, content); code != 0) return code;
  const bool isDone =
      fsync(temporary) == 0 && std::rename(temporaryPath.c_str(), target.path().c_str()) == 0;
  return isDone ? 0 : errno;
}

}  // namespace

std::optional<std::string> read(const FileURL& file) {
  const FileDescriptor opened(::open(file.path().c_str(), O_RDONLY | O_CLOEXEC));
  if (!opened) {
    if (errno == ENOENT) return std::nullopt;
    throw PlatformError("read", file, errno);
  }
  auto content = readToEnd(opened.get());
  if (!content) throw PlatformError("read", file, content.error());
  return *std::move(content);
}

void replace(const FileURL& file, std::string_view content) {
  const FileURL target = behindLinks(file);
  std::string temporaryPath = target.path() + ".XXXXXX";
  FileDescriptor temporary(mkostemp(temporaryPath.data(), O_CLOEXEC));
  if (!temporary) throw PlatformError("write", file, errno);
  if (const int code = write(temporary.get(), temporaryPath, target, content); code != 0) {
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
