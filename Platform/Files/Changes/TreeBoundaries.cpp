#include "Platform/Files/Changes/TreeBoundaries.h"

#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include <linux/magic.h>
#include <sys/vfs.h>

#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Places/MountTable.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/SystemDirectories.h"
#include "Platform/Files/Walk/TreeWalk.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr long bcachefsMagic = 0xca451a4e;

/// Subvolumes stand in no table, so only a walk finds them.
class BoundarySearch : public WalkHandler {
 public:
  void entry(const WalkedEntry&) override {}
  void failed(const PlatformError& error) override {
    if (!_found) _found = error;
  }
  const std::optional<PlatformError>& found() const { return _found; }

 private:
  std::optional<PlatformError> _found;
};

bool canHoldSubvolumes(int directory, const FileURL& url, const std::string& operation) {
  struct statfs fileSystem {};
  if (fstatfs(directory, &fileSystem) != 0) throw PlatformError(operation, url, errno);
  return fileSystem.f_type == BTRFS_SUPER_MAGIC || fileSystem.f_type == bcachefsMagic;
}

}  // namespace

void refuseFixedPlaces(int parentDescriptor, const std::string& name, const FileURL& url,
                       const std::string& operation) {
  EntryValues values{};
  if (const int code = readEntryValues(parentDescriptor, name.c_str(), values); code != 0) {
    throw PlatformError(operation, url, code);
  }
  if (!isDirectory(values)) return;
  const FileURL parentPath = pathOfDescriptor(parentDescriptor, url, operation);
  const std::string inside = parentPath.appendingPathComponent(name).path() + "/";
  std::vector<FileURL> places = systemDirectoryURLs();
  places.push_back(StandardDirectories::home());
  for (const FileURL& place : places) {
    std::error_code missing;
    const std::string path = std::filesystem::canonical(place.path(), missing).string();
    if (!missing && (path + "/").starts_with(inside)) {
      throw PlatformError(operation, url, EBUSY, "a folder that is never cleared lies in it");
    }
  }
}

void refuseBoundary(const FileURL& url, const std::string& operation) {
  throw PlatformError(operation, url, EXDEV, "it holds another volume");
}

void refuseMounts(int parentDescriptor, const std::string& name, const FileURL& url,
                  const std::string& operation) {
  EntryValues parent{};
  EntryValues values{};
  int code = readEntryValues(parentDescriptor, "", parent);
  if (code == 0) code = readEntryValues(parentDescriptor, name.c_str(), values);
  if (code != 0) throw PlatformError(operation, url, code);
  if (isBoundary(values, identityOf(parent))) refuseBoundary(url, operation);
  if (!isDirectory(values)) return;

  // The kernel's own path of the directory, since links above it may have changed.
  const FileURL parentPath = pathOfDescriptor(parentDescriptor, url, operation);
  const std::string inside = parentPath.appendingPathComponent(name).path() + "/";
  for (const Mount& mount : readMountTable()) {
    if (mount.mountPoint.starts_with(inside)) refuseBoundary(url, operation);
  }
}

void refuseMountsAndSubvolumes(int parentDescriptor, const std::string& name, const FileURL& url,
                               const std::string& operation) {
  refuseMounts(parentDescriptor, name, url, operation);
  if (!canHoldSubvolumes(parentDescriptor, url, operation)) return;

  EntryValues values{};
  if (const int code = readEntryValues(parentDescriptor, name.c_str(), values); code != 0) {
    throw PlatformError(operation, url, code);
  }
  if (!isDirectory(values)) return;
  BoundarySearch search;
  TreeWalk(url, search).run(parentDescriptor, name.c_str());
  if (!search.found()) return;
  if (search.found()->code() == EXDEV) refuseBoundary(url, operation);
  throw PlatformError(operation, search.found()->url(), search.found()->code());
}

}  // namespace tidemar
