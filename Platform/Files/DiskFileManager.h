#pragma once

#include "Platform/Files/FileManager.h"

namespace tidemar {

/// The real disk. Has no state; one object serves any number of threads.
class DiskFileManager : public FileManager {
 public:
  std::string canonicalPath(const FileURL& url) const override;
  std::unique_ptr<OpenFolder> openFolder(const FileURL& url) const override;
  OpenedBookmark openBookmark(std::string_view bookmark) const override;
  VolumeCapacity volumeCapacity(const FileURL& url) const override;
  std::vector<FileURL> mountedVolumeURLs() const override;
  FileURL homeDirectoryForCurrentUser() const override;
  std::vector<FileURL> systemDirectoryURLs() const override;
  Date bootTime() const override;
};

}  // namespace tidemar
