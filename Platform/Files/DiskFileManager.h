#pragma once

#include "Platform/Files/FileManager.h"

namespace tidemar {

/// The real disk. Has no state; one object serves any number of threads.
class DiskFileManager : public FileManager {
 public:
  std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& directory) const override;
  ResourceValues resourceValues(const FileURL& url) const override;
  void walkTree(const FileURL& directory, TreeVisitor& visitor) const override;
  bool fileExists(const FileURL& url) const override;
  std::string canonicalPath(const FileURL& url) const override;
  std::string resolvingSymlinksInPath(const FileURL& url) const override;
  std::string bookmarkData(const FileURL& directory) const override;
  ResolvedBookmark resolveBookmark(std::string_view bookmark) const override;
  std::vector<std::string> tagNames(const FileURL& url) const override;
  void setTagNames(const FileURL& url, std::span<const std::string> tags) const override;
  void removeItem(const FileURL& url) const override;
  std::optional<FileURL> trashItem(const FileURL& url) const override;
  void moveItem(const FileURL& from, const FileURL& to) const override;
  VolumeCapacity volumeCapacity(const FileURL& url) const override;
  std::vector<FileURL> mountedVolumeURLs() const override;
  FileURL homeDirectoryForCurrentUser() const override;
  std::vector<FileURL> systemDirectoryURLs() const override;
  Date bootTime() const override;
};

}  // namespace tidemar
