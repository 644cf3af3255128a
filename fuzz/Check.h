#pragma once

#include <string_view>

/// What a fuzz target is made of.
namespace tidemar::fuzz {

/// Feeds bytes to a parser and requires what has to hold of its answer, whatever the bytes are.
/// Each target defines it once. Whatever it throws is a fault.
void check(std::string_view input);

/// Ends the process where the sentence doesn't hold.
void require(bool holds, const char* sentence);

/// The input's first line, taken off it together with its end: for a target that needs two values.
std::string_view takeLine(std::string_view& input);

}  // namespace tidemar::fuzz
