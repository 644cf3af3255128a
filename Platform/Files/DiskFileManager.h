#pragma once

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Files/Places/MountTable.h"

namespace tidemar {

/// The real disk. One object serves any number of threads; all that it keeps is the table of mounts
/// as long as that doesn't change.
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

 private:
  std::unique_ptr<OpenFolder> opened(FileDescriptor directory, FileURL url) const;

  std::shared_ptr<MountTableReader> _mounts = std::make_shared<MountTableReader>();
};

}  // namespace tidemar
