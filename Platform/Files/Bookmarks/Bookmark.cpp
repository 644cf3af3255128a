#include "Platform/Files/Bookmarks/Bookmark.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "Platform/Files/Bookmarks/BookmarkSearch.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* makeOperation = "remember the place of";
constexpr const char* findOperation = "find";

/// Never waits: what isn't a directory isn't opened.
constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;

BookmarkRecord recordOf(const FileDescriptor& directory, const FileURL& url,
                        const std::string& operation) {
  const int descriptor = directory.get();
  return {pathOfDescriptor(descriptor, url, operation).path(),
          fileSystemIdentity(descriptor, url, operation),
          persistentIdentity(descriptor, url, operation)};
}

/// What lies at the remembered path now; none where no directory does.
std::optional<BookmarkRecord> recordAt(const FileURL& url) {
  const FileDescriptor directory(open(url.path().c_str(), openFlags));
  if (directory) return recordOf(directory, url, findOperation);
  if (errno == ENOENT || errno == ENOTDIR || errno == ELOOP) return std::nullopt;
  throw PlatformError(findOperation, url, errno);
}

ResolvedBookmark outsideTrash(const std::string& path, bool isStale) {
  FileURL url(path);
  if (liesInTrash(url)) throw PlatformError(findOperation, url, ENOENT, "it lies in the Bin");
  return {.url = std::move(url), .isStale = isStale};
}

}  // namespace

std::string makeBookmark(const FileURL& url) {
  if (url.path().find('\0') != std::string::npos) throw PlatformError(makeOperation, url, EINVAL);
  const FileDescriptor directory(open(url.path().c_str(), openFlags));
  if (!directory) throw PlatformError(makeOperation, url, errno);
  return encodeBookmark(recordOf(directory, url, makeOperation));
}

ResolvedBookmark resolveBookmark(std::string_view bookmark) {
  const std::optional<BookmarkRecord> remembered = decodeBookmark(bookmark);
  if (!remembered) {
    throw PlatformError(findOperation, FileURL(), EINVAL, "what is remembered of it is damaged");
  }
  const FileURL url(remembered->path);
  const std::optional<BookmarkRecord> present = recordAt(url);
  const bool isSameFileSystem = present && present->fileSystem == remembered->fileSystem;

  if (isSameFileSystem && isSameDirectory(present->directory, remembered->directory)) {
    return outsideTrash(present->path, present->path != remembered->path);
  }
  if (auto found = searchForDirectory(*remembered))
    return {.url = *std::move(found), .isStale = true};
  // Through a link, only the directory itself will do.
  if (isSameFileSystem && present->path == remembered->path) {
    ResolvedBookmark replacement = outsideTrash(present->path, true);
    replacement.isReplacement = true;
    return replacement;
  }
  if (present && !isSameFileSystem) {
    throw PlatformError(findOperation, url, ENOENT, "the drive that it lies on isn't connected");
  }
  throw PlatformError(findOperation, url, ENOENT,
                      "it is gone, or the drive that it lies on isn't connected");
}

}  // namespace tidemar
