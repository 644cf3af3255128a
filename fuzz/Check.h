#pragma once

#include <string_view>
#include <utility>

/// What a fuzz target is made of.
namespace tidemar::fuzz {

/// Feeds bytes to a parser and requires what has to hold of its answer, whatever the bytes are.
/// Each target defines it once. Whatever it throws is a fault.
void check(std::string_view input);

/// Ends the process where the sentence doesn't hold.
void require(bool holds, const char* sentence);

/// The input's first line, taken off it together with its end: for a target that needs two values.
std::string_view takeLine(std::string_view& input);

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
