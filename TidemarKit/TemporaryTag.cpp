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

std::vector<std::string> tags(const FileManager& fileManager, const FileURL& url) {
  return fileManager.tagNames(url);
}

bool isTagged(const FileManager& fileManager, const FileURL& url) noexcept {
  try {
    return holdsName(tags(fileManager, url));
  } catch (const std::exception&) {
    // Dropped: a folder whose tags can't be read counts as one that has lost its tag.
    return false;
  }
}

bool holdsName(const std::vector<std::string>& tags) noexcept {
  return std::ranges::any_of(tags, isName);
}

void add(const FileManager& fileManager, const FileURL& url) {
  std::vector<std::string> list = tags(fileManager, url);
  if (holdsName(list)) return;
  list.emplace_back(name);
  fileManager.setTagNames(url, list);
}

void remove(const FileManager& fileManager, const FileURL& url) {
  std::vector<std::string> list = tags(fileManager, url);
  if (std::erase_if(list, isName) == 0) return;
  fileManager.setTagNames(url, list);
}

}  // namespace tidemar::TemporaryTag
