#include "Platform/Files/DiskFileManager.h"

#include <utility>

#include "Platform/Files/Bookmarks/Bookmark.h"
#include "Platform/Files/Descriptors/CanonicalPath.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/DiskFolder.h"
#include "Platform/Files/Places/BootTime.h"
#include "Platform/Files/Places/FixedPlaces.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/Volumes.h"

namespace tidemar {

std::string DiskFileManager::canonicalPath(const FileURL& url) const {
  auto path = tidemar::canonicalPath(url);
  if (!path) throw PlatformError("find", url, path.error());
  return *std::move(path);
}

std::unique_ptr<OpenFolder> DiskFileManager::openFolder(const FileURL& url) const {
  FileDescriptor directory = openDirectoryAt(url, "open");
  FileURL place = pathOfDescriptor(directory.get(), url, "open");
  return opened(std::move(directory), std::move(place));
}

OpenedBookmark DiskFileManager::openBookmark(std::string_view bookmark) const {
  BookmarkedDirectory found = tidemar::openBookmark(bookmark);
  return {.folder = opened(std::move(found.directory), std::move(found.url)),
          .isStale = found.isStale,
          .isReplacement = found.isReplacement};
}

VolumeCapacity DiskFileManager::volumeCapacity(const FileURL& url) const {
  return readVolumeCapacity(url);
}

std::vector<FileURL> DiskFileManager::mountedVolumeURLs() const {
  return volumeURLs(*_mounts->mounts());
}

FileURL DiskFileManager::homeDirectoryForCurrentUser() const {
  return StandardDirectories::home();
}

std::vector<FileURL> DiskFileManager::systemDirectoryURLs() const {
  return tidemar::systemDirectoryURLs();
}

Date DiskFileManager::bootTime() const {
  return readBootTime();
}

std::unique_ptr<OpenFolder> DiskFileManager::opened(FileDescriptor directory, FileURL url) const {
  return std::make_unique<DiskFolder>(std::move(directory), std::move(url), _mounts);
}

}  // namespace tidemar
