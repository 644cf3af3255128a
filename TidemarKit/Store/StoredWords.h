#pragma once

#include <string>
#include <string_view>

#include "TidemarCore/Disposal.h"
#include "TidemarCore/Rule.h"

/// The words and lists of words that columns hold, and back. An unknown word throws
/// `DatabaseError`: a row that this version doesn't understand is never guessed at.
namespace tidemar::StoredWords {

Disposal disposal(std::string_view text);

/// A JSON array of the rules' words in their order of declaration.
std::string text(RuleSet reasons);

/// The set of a JSON array of words in any order.
RuleSet reasons(std::string_view text);

}  // namespace tidemar::StoredWords
