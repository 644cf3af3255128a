#include "TidemarKit/Store/StoredWords.h"

#include <nlohmann/json.hpp>

#include <sqlite3.h>

#include "Platform/Text.h"
#include "TidemarKit/Store/DatabaseError.h"

namespace tidemar::StoredWords {
namespace {

using nlohmann::json;

[[noreturn]] void fail(std::string_view what, std::string_view text) {
  throw DatabaseError(SQLITE_ERROR, std::string(what) + " " + displayText(text));
}

}  // namespace

Disposal disposal(std::string_view text) {
  if (const auto disposal = disposalFromRawValue(text)) return *disposal;
  fail("Unknown disposal", text);
}

std::string text(RuleSet reasons) {
  json words = json::array();
  for (const Rule rule : allRules) {
    if (reasons.contains(rule)) words.push_back(rawValue(rule));
  }
  return words.dump();
}

RuleSet reasons(std::string_view text) {
  const json words = json::parse(text, nullptr, /*allow_exceptions=*/false);
  // The parser takes a NUL for the end of the text.
  if (!words.is_array() || text.contains('\0')) fail("Unreadable reasons", text);
  RuleSet reasons;
  for (const json& word : words) {
    if (!word.is_string()) fail("Unreadable reasons", text);
    const auto rule = ruleFromRawValue(word.get_ref<const std::string&>());
    if (!rule) fail("Unknown rule in the reasons", text);
    reasons.insert(*rule);
  }
  return reasons;
}

}  // namespace tidemar::StoredWords
