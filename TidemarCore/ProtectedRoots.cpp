#include "TidemarCore/ProtectedRoots.h"

namespace tidemar {

std::vector<FileURL> protectedRootURLs(const FileURL& home, std::span<const FileURL> volumes) {
  std::vector<FileURL> roots;
  for (const char* path : {"/", "/Applications", "/Library", "/System", "/Users"})
    roots.emplace_back(path);
  roots.push_back(home);
  for (const char* name : {"Desktop", "Documents", "Library"}) {
    roots.push_back(home.appendingPathComponent(name));
  }
  roots.insert(roots.end(), volumes.begin(), volumes.end());
  return roots;
}

}  // namespace tidemar
