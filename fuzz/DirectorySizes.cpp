#include <string>

#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {

/// The input's first line is a name, the rest a cache of sizes.
void check(std::string_view input) {
  const std::string name(takeLine(input));
  const std::string kept = directorySizesWithout(name, input);
  require(directorySizesWithout(name, kept) == kept, "nothing of the item is left");

  std::string_view keptLines = kept;
  for (std::string_view lines = input; !lines.empty();) {
    const std::string_view before = lines;
    const std::string_view line = takeLine(lines);
    const std::string_view whole = before.substr(0, before.size() - lines.size());
    if (keptLines.starts_with(whole)) {
      keptLines.remove_prefix(whole.size());
    } else {
      const std::size_t first = line.find(' ');
      const std::size_t second = first == line.npos ? first : line.find(' ', first + 1);
      require(second != line.npos && percentDecoded(line.substr(second + 1)) == name,
              "a line that goes has the item's name");
    }
  }
  require(keptLines.empty(), "all other lines stay as they were, in their order");

  const std::string line = "4096 1763763095 " + percentEncoded(name) + "\n";
  require(directorySizesWithout(name, line + std::string(input)) == kept,
          "a line at the front goes");
  if (input.empty() || input.ends_with('\n')) {
    require(directorySizesWithout(name, std::string(input) + line) == kept,
            "a line at the end goes");
  }
}

}  // namespace tidemar::fuzz
