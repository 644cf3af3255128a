#include "Platform/Extension/ThunarActions.h"

#include <algorithm>
#include <string>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// Whether the lists differ by an empty root that has got a closing tag.
bool isOpenedRoot(std::string_view before, std::string_view after) {
  const auto at =
      static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
  if (!before.substr(at).starts_with("/>")) return false;
  const std::string start(before.substr(0, at));
  const std::string rest(before.substr(at + 2));
  return after == start + ">\n</actions>" + rest || after == start + ">\r\n</actions>" + rest;
}

}  // namespace

void check(std::string_view input) {
  using namespace ThunarActions;
  try {
    const std::string others = removingOurs(input);
    require(!containsOurs(others), "nothing of ours is left");
    require(containsOurs(input) || others == input, "a list without ours stays as it is");

    const std::string added = addingOurs(input, "'/a b' %F");
    require(containsOurs(added), "what was added is there");
    require(addingOurs(added, "'/a b' %F") == added, "adding it again changes nothing");
    const std::string removed = removingOurs(added);
    require(removed == others || isOpenedRoot(others, removed), "all else stays byte for byte");
    require(removingOurs(addingOurs(removed, "x")) == removed, "so does a list that was changed");
  } catch (const Malformed&) {
    // Left alone.
  }
}

}  // namespace tidemar::fuzz
