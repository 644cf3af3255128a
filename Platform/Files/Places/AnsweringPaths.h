#pragma once

#include <set>
#include <string>
#include <vector>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Places/MountTable.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Opens directories without touching a mount that may never answer, as a network file system whose
/// server is gone or that of a program that hangs: only the disks of this computer, its memory, and
/// the mounts through which one path leads that had to be touched anyway.
class AnsweringPaths {
 public:
  /// For these mounts, and a path without links.
  AnsweringPaths(const std::vector<Mount>& mounts, const FileURL& touched);

  /// Opens a directory, through links if need be; none where it isn't there or can't be reached
  /// without touching another mount than these.
  FileDescriptor open(const FileURL& directory) const;

 private:
  std::set<std::string> _forbidden;  ///< The mount points of all others.
};

/// Whether the way to a place leads through a directory, or ends there; both without links.
bool leadsThrough(const FileURL& place, const std::string& directory);

}  // namespace tidemar
