#include "TidemarKit/TemporaryTag.h"

#include <algorithm>

namespace tidemar::TemporaryTag {
namespace {

bool isName(std::string_view tag) noexcept {
  constexpr std::string_view blanks = " \t";
  const std::size_t first = tag.find_first_not_of(blanks);
  if (first == std::string_view::npos) return false;
  return tag.substr(first, tag.find_last_not_of(blanks) - first + 1) == name;
}

}  // namespace

std::vector<std::string> tags(const OpenFolder& folder) {
  return folder.tagNames();
}

bool isTagged(const OpenFolder& folder) noexcept {
  try {
    return holdsName(tags(folder));
  } catch (const std::exception&) {
    // Dropped: a folder whose tags can't be read counts as one that has lost its tag.
    return false;
  }
}

bool holdsName(std::span<const std::string> tags) noexcept {
  return std::ranges::any_of(tags, isName);
}

void add(OpenFolder& folder) {
  std::vector<std::string> list = tags(folder);
  if (holdsName(list)) return;
  list.emplace_back(name);
  folder.setTagNames(list);
}

void remove(OpenFolder& folder) {
  std::vector<std::string> list = tags(folder);
  if (std::erase_if(list, isName) == 0) return;
  folder.setTagNames(list);
}

}  // namespace tidemar::TemporaryTag
