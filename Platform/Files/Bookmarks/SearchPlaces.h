#pragma once

#include <set>
#include <string>
#include <vector>

#include "Platform/Files/Places/AnsweringPaths.h"

namespace tidemar {

/// Where a search for a directory begins. No mount is touched on the way there that may never
/// answer, except those through which the directory's old path leads: they had to be touched to
/// learn that it isn't there.
class SearchPlaces {
 public:
  /// For a directory that lay at this path. Throws PlatformError where the mounts can't be told.
  explicit SearchPlaces(const FileURL& old);

  /// The two nearest directories above the old place that are still there, then the user's own.
  std::vector<FileURL> near() const;

  /// The tops of the mount in which the old place lay and of all disks, wherever they are mounted.
  std::vector<FileURL> far() const;

  /// Opens one of these places. None where it isn't there or can't be reached as above.
  FileDescriptor open(const FileURL& place) const { return _paths.open(place); }

  /// Whether something is mounted at this path without links, an automount included.
  bool isMountPoint(const std::string& path) const { return _mountPoints.contains(path); }

 private:
  FileURL _old;
  std::vector<Mount> _mounts;
  mutable AnsweringPaths _paths;  ///< Remembers what it met on the way.
  std::set<std::string> _mountPoints;
};

}  // namespace tidemar
