#pragma once

#include <set>
#include <string>
#include <vector>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Places/MountTable.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Where a search for a directory begins, and the way there.
///
/// A mount may never answer: a network file system whose server is gone, or that of a program that
/// hangs. So no mount is touched but the disks of this computer and those through which the
/// directory's old path leads, which had to be touched to learn that it isn't there.
class SearchPlaces {
 public:
  /// For a directory that lay at this path. Throws PlatformError where the mounts can't be told.
  explicit SearchPlaces(const FileURL& old);

  /// The two nearest directories above the old place that are still there, then the user's own.
  std::vector<FileURL> near() const;

  /// The tops of the mount in which the old place lay and of all disks, wherever they are mounted.
  std::vector<FileURL> far() const;

  /// Opens a directory, through links if need be; none where it isn't there or can't be reached
  /// without touching such a mount.
  FileDescriptor open(const FileURL& directory) const;

  /// Whether something is mounted at this path without links, an automount included.
  bool isMountPoint(const std::string& path) const { return _mountPoints.contains(path); }

 private:
  bool mayBeTouched(const Mount& mount) const;

  FileURL _old;
  std::vector<Mount> _mounts;
  std::set<std::string> _mountPoints;
  std::set<std::string> _forbidden;  ///< Those at which something lies that must not be touched.
};

}  // namespace tidemar
