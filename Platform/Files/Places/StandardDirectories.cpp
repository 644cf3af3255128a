#include "Platform/Files/Places/StandardDirectories.h"

#include <array>
#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

namespace tidemar::StandardDirectories {
namespace {

std::optional<FileURL> absoluteVariable(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || value[0] != '/') return std::nullopt;
  return FileURL(value);
}

}  // namespace

FileURL home() {
  if (auto url = absoluteVariable("HOME")) return *url;
  passwd record{};
  passwd* found = nullptr;
  std::array<char, 16384> buffer{};
  if (getpwuid_r(getuid(), &record, buffer.data(), buffer.size(), &found) == 0 &&
      found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') {
    return FileURL(found->pw_dir);
  }
  return FileURL("/");
}

FileURL data() {
  if (auto url = absoluteVariable("XDG_DATA_HOME")) return *url;
  return home().appendingPathComponent(".local").appendingPathComponent("share");
}

FileURL configuration() {
  if (auto url = absoluteVariable("XDG_CONFIG_HOME")) return *url;
  return home().appendingPathComponent(".config");
}

std::optional<FileURL> runtime() {
  return absoluteVariable("XDG_RUNTIME_DIR");
}

}  // namespace tidemar::StandardDirectories
