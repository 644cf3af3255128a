#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace tidemar {

/// The reasons for which an item goes.
enum class Rule : std::uint8_t { age, size, automatic, emptyOnRestart };

/// All rules in their order of declaration.
inline constexpr std::array allRules = {Rule::age, Rule::size, Rule::automatic,
                                        Rule::emptyOnRestart};

/// The word that stands for the rule in the database.
std::string_view rawValue(Rule rule) noexcept;

/// The rule of exactly this word, case included; none for any other text.
std::optional<Rule> ruleFromRawValue(std::string_view text) noexcept;

/// A set of rules, compared as a set. One byte.
class RuleSet {
 public:
  constexpr RuleSet() = default;
  constexpr RuleSet(std::initializer_list<Rule> rules) {
    for (Rule rule : rules)
      insert(rule);
  }

  constexpr void insert(Rule rule) noexcept {
    _bits = static_cast<std::uint8_t>(_bits | bit(rule));
  }
  constexpr bool contains(Rule rule) const noexcept { return (_bits & bit(rule)) != 0; }
  constexpr bool isEmpty() const noexcept { return _bits == 0; }
  constexpr std::uint8_t bits() const noexcept { return _bits; }

  friend bool operator==(RuleSet, RuleSet) = default;

 private:
  static constexpr std::uint8_t bit(Rule rule) noexcept {
    return static_cast<std::uint8_t>(1U << static_cast<unsigned>(rule));
  }

  std::uint8_t _bits = 0;
};

}  // namespace tidemar
