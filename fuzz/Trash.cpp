#include <cctype>

#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

bool goesUp(const std::string& path) {
  return path == ".." || path.starts_with("../") || path.ends_with("/..") || path.contains("/../");
}

void checkRecordOf(const std::string& path) {
  constexpr std::time_t date = 1763763095;
  const bool isRecordable = !path.empty() && !path.contains('\0') && !goesUp(path);
  require(pathInTrashRecord(trashRecordText(path, date)) ==
              (isRecordable ? std::optional(path) : std::nullopt),
          "a record that is written holds the path, unless there is none such");
}

/// The bytes of an encoded text by another way than the parser's.
std::optional<std::string> decoded(std::string_view text) {
  const auto isHexadecimal = [](unsigned char c) { return std::isxdigit(c) != 0; };
  std::string bytes;
  for (; !text.empty(); text.remove_prefix(1)) {
    if (text.front() != '%') {
      bytes += text.front();
      continue;
    }
    const std::string digits(text.substr(1, 2));
    if (digits.size() < 2 || !std::ranges::all_of(digits, isHexadecimal)) return std::nullopt;
    bytes += static_cast<char>(std::stoi(digits, nullptr, 16));
    text.remove_prefix(2);
  }
  return bytes;
}

}  // namespace

void checkTrashRecord(std::string_view input) {
  const std::string text(input);
  checkRecordOf(text);
  const std::string otherGroup = "[Next]\nPath=/b\nDeletionDate=2025-11-21T22:11:35\n";
  require(pathInTrashRecord(text + "\n" + otherGroup) == pathInTrashRecord(text + "\n"),
          "another group has no say in the path");

  const auto path = pathInTrashRecord(text);
  if (!path) return;
  checkRecordOf(*path);
  require(!path->empty() && !goesUp(*path), "a path that is read can be recorded");
  require(pathInTrashRecord(text + "\nPath=/b\n") == path, "a second path changes nothing");
  for (std::size_t cut = 1; cut <= std::min(text.size(), std::size_t{32}); ++cut) {
    const auto pathOfCut = pathInTrashRecord(text.substr(0, text.size() - cut));
    require(!pathOfCut || pathOfCut == path, "a record that is cut short has no other path");
  }
}

/// The input's first line is a name, the rest a cache of sizes.
void checkDirectorySizes(std::string_view input) {
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

void checkPercentEncoding(std::string_view input) {
  const std::string encoded = percentEncoded(input);
  require(percentDecoded(encoded) == input, "what is encoded is decoded to the same bytes");
  require(std::ranges::all_of(encoded, [](char c) { return c > ' ' && c <= '~'; }),
          "an encoded text is visible ASCII");
  require(percentDecoded(input) == decoded(input),
          "a text whose escapes are whole is decoded, and no other");
}

}  // namespace tidemar::fuzz
