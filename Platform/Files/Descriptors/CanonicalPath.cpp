#include "Platform/Files/Descriptors/CanonicalPath.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

namespace tidemar {

std::expected<std::string, int> canonicalPath(const FileURL& url) {
  const std::string given = url.path();
  if (given.find('\0') != std::string::npos) return std::unexpected(EINVAL);
  const std::unique_ptr<char, decltype(&std::free)> path(realpath(given.c_str(), nullptr),
                                                         &std::free);
  if (!path) return std::unexpected(errno);
  return path.get();
}

}  // namespace tidemar
