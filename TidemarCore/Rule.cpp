#include "TidemarCore/Rule.h"

namespace tidemar {

std::string_view rawValue(Rule rule) noexcept {
  switch (rule) {
    case Rule::age:
      return "age";
    case Rule::size:
      return "size";
    case Rule::automatic:
      return "automatic";
    case Rule::emptyOnRestart:
      return "emptyOnRestart";
  }
  return {};
}

std::optional<Rule> ruleFromRawValue(std::string_view text) noexcept {
  for (Rule rule : allRules) {
    if (rawValue(rule) == text) return rule;
  }
  return std::nullopt;
}

}  // namespace tidemar
