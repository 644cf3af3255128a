#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What the fuzz targets are made of. The target "TagList" is the function checkTagList and the
/// like: it feeds bytes to a parser and requires what has to hold of its answer, whatever the bytes
/// are. Whatever it throws is a fault.
namespace tidemar::fuzz {

using Check = void(std::string_view input);

/// Checks an input, which may take 100 ms of the processor at most.
void checkInTime(Check check, std::string_view input);

/// Ends the process where the sentence doesn't hold.
void require(bool holds, const char* sentence);

/// The input's first line, taken off it together with its end: for a target that needs two values.
std::string_view takeLine(std::string_view& input);

/// Whether a path leads from the root, and holds no byte that ends it.
inline bool isAbsolute(std::string_view path) {
  return path.starts_with('/') && !path.contains('\0');
}

/// Requires that no line has a say in another: parsed one by one they give the same elements.
template <class Parse>
void requireLineByLine(std::string_view input, Parse parse) {
  const auto whole = parse(input);
  auto byLine = parse({});
  while (!input.empty()) {
    for (auto& element : parse(takeLine(input)))
      byLine.push_back(std::move(element));
  }
  require(byLine == whole, "no line has a say in another");
}

}  // namespace tidemar::fuzz
