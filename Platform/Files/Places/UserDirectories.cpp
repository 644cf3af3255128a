#include "Platform/Files/Places/UserDirectories.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

#include "Platform/Files/Places/StandardDirectories.h"

namespace tidemar {
namespace {

constexpr std::string_view blanks = " \t";

std::string_view withoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

/// A text in double quotes as a shell reads it, without the variables; none without an end.
std::optional<std::string> unquoted(std::string_view text) {
  if (!text.starts_with('"')) return std::nullopt;
  std::string value;
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\' && i + 1 < text.size()) ++i;
    value += text[i];
  }
  return std::nullopt;
}

/// A line XDG_{name}_DIR="{place}", where the place is absolute or begins with $HOME.
std::optional<UserDirectory> parseLine(std::string_view line, const FileURL& home) {
  constexpr std::string_view front = "XDG_";
  constexpr std::string_view back = "_DIR";
  constexpr std::string_view homeVariable = "$HOME";
  line = withoutLeadingBlanks(line);
  const std::size_t equals = line.find('=');
  if (equals == line.npos) return std::nullopt;
  const std::string_view key = line.substr(0, line.find_first_of(" \t="));
  if (!key.starts_with(front) || !key.ends_with(back) || key.size() <= front.size() + back.size()) {
    return std::nullopt;
  }
  auto place = unquoted(withoutLeadingBlanks(line.substr(equals + 1)));
  if (!place) return std::nullopt;
  if (*place == homeVariable || place->starts_with(std::string(homeVariable) + "/")) {
    place->replace(0, homeVariable.size(), home.path() == "/" ? "" : home.path());
  }
  if (!place->starts_with('/') || place->contains('\0')) return std::nullopt;
  const std::string_view name = key.substr(front.size(), key.size() - front.size() - back.size());
  return UserDirectory{std::string(name), FileURL(*std::move(place))};
}

}  // namespace

std::vector<UserDirectory> userDirectories() {
  const FileURL url = StandardDirectories::configuration().appendingPathComponent("user-dirs.dirs");
  std::ifstream file(url.path(), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  return parseUserDirectories(text, StandardDirectories::home());
}

std::vector<UserDirectory> parseUserDirectories(std::string_view text, const FileURL& home) {
  std::vector<UserDirectory> directories;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    auto directory = parseLine(text.substr(0, end), home);
    if (directory && directory->url != home) directories.push_back(*std::move(directory));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return directories;
}

}  // namespace tidemar
