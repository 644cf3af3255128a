#pragma once

#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Places/MountTable.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Finds directories without touching a mount that may never answer, as a network file system whose
/// server is gone or that of a program that hangs: only the disks of this computer, its memory, and
/// the mounts through which one path leads that had to be touched anyway. For one thread, and not
/// for long: what it met on the way to one directory it isn't asked for again on the way to others.
class AnsweringPaths {
 public:
  /// For these mounts, and a path without links.
  AnsweringPaths(const std::vector<Mount>& mounts, const FileURL& touched);

  /// Which directory lies at a place, through links if need be; none where there is none or it
  /// can't be reached without touching another mount than these.
  std::optional<DirectoryIdentity> identityAt(const FileURL& place);

  /// Opens such a directory.
  FileDescriptor open(const FileURL& directory);

 private:
  /// What lies at a path on the way to which there are no links.
  struct Entry {
    std::optional<DirectoryIdentity> directory;  ///< None where it is no directory.
    std::string target;                          ///< Of a link.
  };

  std::optional<std::string> withoutLinks(const FileURL& place);
  const Entry& entryAt(const std::string& path);

  std::unordered_map<std::string, Entry> _met;
  std::set<std::string> _forbidden;  ///< The mount points of all others.
};

/// Whether the way to a place leads through a directory, or ends there; both without links.
bool leadsThrough(const FileURL& place, const std::string& directory);

}  // namespace tidemar
