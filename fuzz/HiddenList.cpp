#include "Platform/Files/Walk/HiddenList.h"

#include <string>

#include "fuzz/Check.h"

namespace tidemar::fuzz {

void check(std::string_view input) {
  const HiddenList list = HiddenList::parse(input);
  require(!list.hides(""), "no name isn't hidden");
  require(!list.hides("x\n" + std::string(input)), "two lines are no name");

  const std::string lines = "\n" + std::string(input) + "\n";
  std::string_view rest = input;
  // Some, since each is a search of the whole text.
  for (int searches = 0; searches < 16 && !rest.empty(); ++searches) {
    const std::string_view line = takeLine(rest);
    if (line.empty()) continue;
    require(list.hides(line), "a name that stands in the list is hidden");
    const std::string shorter(line.substr(0, line.size() - 1));
    const bool isListed =
        !shorter.empty() && lines.find("\n" + shorter + "\n") != std::string::npos;
    require(list.hides(shorter) == (isListed || shorter.starts_with('.')),
            "a name that doesn't stand in the list isn't hidden");
  }
}

}  // namespace tidemar::fuzz
