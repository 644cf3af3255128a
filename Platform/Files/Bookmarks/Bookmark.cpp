#include "Platform/Files/Bookmarks/Bookmark.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "Platform/Files/Bookmarks/BookmarkSearch.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* makeOperation = "remember the place of";
constexpr const char* findOperation = "find";

BookmarkRecord recordOf(int descriptor, const FileURL& url, const std::string& operation) {
  return {pathOfDescriptor(descriptor, url, operation).path(),
          fileSystemIdentity(descriptor, url, operation),
          persistentIdentity(descriptor, url, operation)};
}

/// Opens what lies at the remembered path now; nothing where no directory does.
FileDescriptor openIfDirectory(const FileURL& url) {
  try {
    return openDirectoryAt(url, findOperation);
  } catch (const PlatformError& error) {
    if (error.code() == ENOENT || error.code() == ENOTDIR || error.code() == ELOOP) return {};
    throw;
  }
}

BookmarkedDirectory outsideTrash(FileDescriptor directory, const std::string& path, bool isStale) {
  FileURL url(path);
  if (liesInTrash(url)) throw PlatformError(findOperation, url, ENOENT, "it lies in the Bin");
  return {.directory = std::move(directory), .url = std::move(url), .isStale = isStale};
}

/// The remembered directory where the search meets it. It may have moved on since then.
std::optional<BookmarkedDirectory> search(const BookmarkRecord& remembered) {
  const auto url = searchForDirectory(remembered);
  if (!url) return std::nullopt;
  FileDescriptor directory = openIfDirectory(*url);
  if (!directory) return std::nullopt;
  const BookmarkRecord present = recordOf(directory.get(), *url, findOperation);
  if (present.fileSystem != remembered.fileSystem ||
      !isSameDirectory(present.directory, remembered.directory))
    return std::nullopt;
  return outsideTrash(std::move(directory), present.path, true);
}

}  // namespace

std::string makeBookmark(int directory, const FileURL& url) {
  return encodeBookmark(recordOf(directory, url, makeOperation));
}

BookmarkedDirectory openBookmark(std::string_view bookmark) {
  const std::optional<BookmarkRecord> remembered = decodeBookmark(bookmark);
  if (!remembered) {
    throw PlatformError(findOperation, FileURL(), EINVAL, "what is remembered of it is damaged");
  }
  const FileURL url(remembered->path);
  FileDescriptor directory = openIfDirectory(url);
  std::optional<BookmarkRecord> present;
  if (directory) present = recordOf(directory.get(), url, findOperation);
  const bool isSameFileSystem = present && present->fileSystem == remembered->fileSystem;

  if (isSameFileSystem && isSameDirectory(present->directory, remembered->directory)) {
    return outsideTrash(std::move(directory), present->path, present->path != remembered->path);
  }
  if (auto found = search(*remembered)) return *std::move(found);
  // Through a link, only the directory itself will do.
  if (isSameFileSystem && present->path == remembered->path) {
    BookmarkedDirectory replacement = outsideTrash(std::move(directory), present->path, true);
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
