#include <algorithm>
#include <string>
#include <vector>

#include "Platform/Files/Tags.h"
#include "TidemarKit/TemporaryTag.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// Whether the name stands in a list with nothing but blanks up to the commas around it.
bool listHoldsName(std::string_view list) {
  constexpr std::string_view blanks = " \t";
  constexpr std::string_view name = TemporaryTag::name;
  for (std::size_t i = list.find(name); i != list.npos; i = list.find(name, i + 1)) {
    const std::size_t before = list.substr(0, i).find_last_not_of(blanks);
    const std::size_t behind = list.find_first_not_of(blanks, i + name.size());
    if ((before == list.npos || list[before] == ',') &&
        (behind == list.npos || list[behind] == ','))
      return true;
  }
  return false;
}

}  // namespace

void check(std::string_view input) {
  std::vector<std::string> tags = splitTagNames(input);
  require(joinTagNames(tags) == input, "what was read is written as it stood");
  require(std::ranges::none_of(tags, [](const auto& tag) { return tag.find(',') != tag.npos; }),
          "no tag holds a comma");
  require(TemporaryTag::holdsName(tags) == listHoldsName(input),
          "the name is found where it stands between commas, and only there");

  tags.emplace_back(TemporaryTag::name);
  const std::string longer = joinTagNames(tags);
  require(TemporaryTag::holdsName(splitTagNames(longer)), "a name that was added is found");
  require(longer.starts_with(input), "the tags in front of an added one stay as they are");
}

}  // namespace tidemar::fuzz
