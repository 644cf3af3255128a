#include "Platform/Desktop/KeyFile.h"

#include <algorithm>
#include <string>

namespace tidemar::KeyFile {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace

std::vector<Entry> entriesOfGroup(std::string_view text, std::string_view group) {
  const std::string heading = '[' + std::string(group) + ']';
  std::vector<Entry> entries;
  bool isInGroup = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.starts_with('[')) isInGroup = line == heading;
    const std::size_t equals = line.find('=');
    if (!isInGroup || line.starts_with('#') || equals == line.npos) continue;
    entries.push_back({trimmed(line.substr(0, equals)), trimmed(line.substr(equals + 1))});
  }
  return entries;
}

std::string_view value(std::string_view text, std::string_view group, std::string_view key) {
  const std::vector<Entry> entries = entriesOfGroup(text, group);
  const auto found = std::ranges::find(entries, key, &Entry::key);
  return found == entries.end() ? std::string_view() : found->value;
}

}  // namespace tidemar::KeyFile
