#include "Platform/Files/Places/UserDirectories.h"

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

std::string lineOf(const UserDirectory& directory) {
  std::string line = "XDG_" + directory.name + "_DIR=\"";
  for (const char c : directory.url.path()) {
    if (c == '"' || c == '\\' || c == '$' || c == '`') line += '\\';
    line += c;
  }
  return line + "\"\n";
}

}  // namespace

void check(std::string_view input) {
  const FileURL home("/home/user");
  const std::vector<UserDirectory> directories = parseUserDirectories(input, home);
  std::string text;
  for (const UserDirectory& directory : directories) {
    require(directory.url.path().starts_with('/') &&
                directory.url.path().find('\0') == std::string::npos,
            "a directory has an absolute path");
    require(directory.url != home, "the home is no directory of a purpose");
    text += lineOf(directory);
  }
  require(parseUserDirectories(text, home) == directories, "written directories are read again");
  requireLineByLine(input, [&](std::string_view part) { return parseUserDirectories(part, home); });
}

}  // namespace tidemar::fuzz
