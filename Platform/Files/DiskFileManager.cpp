#include "Platform/Files/DiskFileManager.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "Platform/Files/Bookmarks/Bookmark.h"
#include "Platform/Files/Changes/Move.h"
#include "Platform/Files/Changes/Removal.h"
#include "Platform/Files/Places/BootTime.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/SystemDirectories.h"
#include "Platform/Files/Places/Volumes.h"
#include "Platform/Files/Tags.h"
#include "Platform/Files/Trash/Trash.h"
#include "Platform/Files/Walk/Listing.h"
#include "Platform/Files/Walk/TreeWalk.h"

namespace tidemar {
namespace {

/// The path without links, none where it leads nowhere; errno then says why.
std::optional<std::string> realPath(const FileURL& url) {
  if (url.path().find('\0') != std::string::npos) {
    errno = EINVAL;
    return std::nullopt;
  }
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(url.path().c_str(), nullptr),
                                                         &std::free);
  return path ? std::optional<std::string>(path.get()) : std::nullopt;
}

/// Shows a walk to a visitor that knows values and no descriptors.
class VisitorOfValues : public WalkHandler {
 public:
  explicit VisitorOfValues(TreeVisitor& visitor) : _visitor(visitor) {}
  void entry(const WalkedEntry& entry) override {
    _visitor.visit({entry.name, entry.depth,
                    tidemar::resourceValues(entry.values, entry.name, entry.isHidden, false)});
  }
  void failed(const PlatformError& error) override { _visitor.failed(error); }

 private:
  TreeVisitor& _visitor;
};

}  // namespace

std::vector<DirectoryEntry> DiskFileManager::contentsOfDirectory(const FileURL& directory) const {
  return listDirectory(directory);
}

ResourceValues DiskFileManager::resourceValues(const FileURL& url) const {
  return readResourceValues(url);
}

void DiskFileManager::walkTree(const FileURL& directory, TreeVisitor& visitor) const {
  try {
    const FileDescriptor parent = openParent(directory, "read");
    VisitorOfValues handler(visitor);
    TreeWalk(directory, handler)
        .run(parent.get(), std::string(directory.lastPathComponent()).c_str());
  } catch (const PlatformError& error) {
    visitor.failed(error);
  }
}

bool DiskFileManager::fileExists(const FileURL& url) const {
  EntryValues values{};
  const int code = readEntryValues(AT_FDCWD, url.path().c_str(), values);
  if (code == ENOENT || code == ENOTDIR) return false;
  if (code != 0) throw PlatformError("look for", url, code);
  return true;
}

std::string DiskFileManager::canonicalPath(const FileURL& url) const {
  if (auto path = realPath(url)) return *std::move(path);
  throw PlatformError("find", url, errno);
}

std::string DiskFileManager::resolvingSymlinksInPath(const FileURL& url) const {
  return realPath(url).value_or(url.path());
}

std::string DiskFileManager::bookmarkData(const FileURL& directory) const {
  return makeBookmark(directory);
}

ResolvedBookmark DiskFileManager::resolveBookmark(std::string_view bookmark) const {
  return tidemar::resolveBookmark(bookmark);
}

std::vector<std::string> DiskFileManager::tagNames(const FileURL& url) const {
  return readTagNames(url);
}

void DiskFileManager::setTagNames(const FileURL& url, std::span<const std::string> tags) const {
  writeTagNames(url, tags);
}

void DiskFileManager::removeItem(const FileURL& url) const {
  tidemar::removeItem(url);
}

std::optional<FileURL> DiskFileManager::trashItem(const FileURL& url) const {
  return tidemar::trashItem(url);
}

void DiskFileManager::moveItem(const FileURL& from, const FileURL& to) const {
  tidemar::moveItem(from, to);
}

VolumeCapacity DiskFileManager::volumeCapacity(const FileURL& url) const {
  return readVolumeCapacity(url);
}

std::vector<FileURL> DiskFileManager::mountedVolumeURLs() const {
  return readMountedVolumeURLs();
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

}  // namespace tidemar
