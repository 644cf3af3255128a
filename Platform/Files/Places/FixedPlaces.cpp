#include "Platform/Files/Places/FixedPlaces.h"

#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/UserDirectories.h"

namespace tidemar {

std::vector<FileURL> systemDirectoryURLs() {
  std::vector<FileURL> directories;
  for (const char* path :
       {"/bin", "/boot", "/dev", "/etc", "/home", "/lib", "/media", "/mnt", "/opt", "/proc",
        "/root", "/run", "/sbin", "/srv", "/sys", "/tmp", "/usr", "/usr/local", "/var"}) {
    directories.emplace_back(path);
  }
  for (const UserDirectory& directory : userDirectories()) {
    if (directory.name == "DESKTOP" || directory.name == "DOCUMENTS")
      directories.push_back(directory.url);
  }
  // What stands for the Library of the home folder here.
  const FileURL home = StandardDirectories::home();
  directories.push_back(home.appendingPathComponent(".local"));
  const FileURL data = StandardDirectories::data();
  directories.push_back(data);
  // The journal of what was removed, and what was removed and can be put back.
  directories.push_back(data.appendingPathComponent("Tidemar"));
  directories.push_back(data.appendingPathComponent("Trash"));
  directories.push_back(StandardDirectories::configuration());
  return directories;
}

}  // namespace tidemar
