#include "Platform/Locale/ByteCountFormat.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>

#include <unicode/locid.h>
#include <unicode/measunit.h>
#include <unicode/numberformatter.h>
#include <unicode/rbnf.h>

#include "Platform/Locale/UnicodeText.h"

namespace tidemar {
namespace {

using icu::number::LocalizedNumberFormatter;

struct Unit {
  icu::MeasureUnit (*measure)();
  UNumberUnitWidth width;
  std::int16_t power;
  std::int32_t maxDecimals;
};

// Bytes have no short form that most people know; the others are known by it.
constexpr std::array<Unit, 6> units = {{
    {icu::MeasureUnit::getByte, UNUM_UNIT_WIDTH_FULL_NAME, 0, 0},
    {icu::MeasureUnit::getKilobyte, UNUM_UNIT_WIDTH_SHORT, 3, 0},
    {icu::MeasureUnit::getMegabyte, UNUM_UNIT_WIDTH_SHORT, 6, 1},
    {icu::MeasureUnit::getGigabyte, UNUM_UNIT_WIDTH_SHORT, 9, 2},
    {icu::MeasureUnit::getTerabyte, UNUM_UNIT_WIDTH_SHORT, 12, 2},
    {icu::MeasureUnit::getPetabyte, UNUM_UNIT_WIDTH_SHORT, 15, 2},
}};

LocalizedNumberFormatter formatter(const Unit& unit, const icu::Locale& locale) {
  return icu::number::NumberFormatter::withLocale(locale)
      .unit(unit.measure())
      .unitWidth(unit.width)
      .scale(icu::number::Scale::powerOfTen(-unit.power))
      .precision(icu::number::Precision::maxFraction(unit.maxDecimals));
}

constexpr std::uint64_t powerOfTen(int exponent) {
  std::uint64_t power = 1;
  while (exponent-- > 0)
    power *= 10;
  return power;
}

/// The least count that would round to "1,000" of a unit: the next unit writes it as "1".
constexpr std::uint64_t firstOfNextUnit(const Unit& unit) {
  const std::uint64_t lastDigit = powerOfTen(unit.power) / powerOfTen(unit.maxDecimals);
  return powerOfTen(unit.power + 3) - lastDigit / 2;
}

/// The locale's word for zero; none where ICU has no words for its numbers.
std::optional<icu::UnicodeString> zeroSpelledOut(const icu::Locale& locale) {
  UErrorCode error = U_ZERO_ERROR;
  const icu::RuleBasedNumberFormat rules(icu::URBNF_SPELLOUT, locale, error);
  if (U_FAILURE(error)) return std::nullopt;
  // Without rules of its own a locale would get those of the language that the program runs in.
  const icu::Locale source = rules.getLocale(ULOC_ACTUAL_LOCALE, error);
  if (U_FAILURE(error) || std::strcmp(source.getLanguage(), locale.getLanguage()) != 0)
    return std::nullopt;
  icu::UnicodeString word;
  rules.format(std::int64_t{0}, word, error);
  if (U_FAILURE(error) || word.isEmpty()) return std::nullopt;
  return word;
}

icu::UnicodeString withFirstLetterRaised(const icu::UnicodeString& text,
                                         const icu::Locale& locale) {
  icu::UnicodeString result = text;
  return result.toTitle(nullptr, locale, U_TITLECASE_WHOLE_STRING | U_TITLECASE_NO_LOWERCASE);
}

/// Zero kilobytes, with the number as a word.
std::string zeroText(const LocalizedNumberFormatter& kilobytes, const icu::Locale& locale) {
  UErrorCode error = U_ZERO_ERROR;
  const icu::number::FormattedNumber formatted = kilobytes.formatInt(0, error);
  icu::UnicodeString text = formatted.toString(error);
  icu::ConstrainedFieldPosition digits;
  digits.constrainField(UFIELD_CATEGORY_NUMBER, UNUM_INTEGER_FIELD);
  const auto word = zeroSpelledOut(locale);
  if (word && formatted.nextPosition(digits, error) && U_SUCCESS(error)) {
    text.replaceBetween(digits.getStart(), digits.getLimit(), *word);
    if (digits.getStart() == 0) text = withFirstLetterRaised(text, locale);
  }
  return toUTF8(text);
}

}  // namespace

struct ByteCountFormat::Units {
  explicit Units(const icu::Locale& locale) {
    for (std::size_t i = 0; i < units.size(); ++i)
      formatters[i] = formatter(units[i], locale);
    zero = zeroText(formatters[1], locale);
  }

  std::array<LocalizedNumberFormatter, units.size()> formatters;
  std::string zero;
};

ByteCountFormat::ByteCountFormat(const std::string& localeName)
    : _units(std::make_unique<const Units>(icu::Locale(localeName.c_str()))) {}

ByteCountFormat::~ByteCountFormat() = default;

std::string ByteCountFormat::text(std::int64_t bytes) const {
  if (bytes == 0) return _units->zero;
  const std::uint64_t magnitude =
      bytes < 0 ? 0 - static_cast<std::uint64_t>(bytes) : static_cast<std::uint64_t>(bytes);
  std::size_t unit = 0;
  while (unit + 1 < units.size() && magnitude >= firstOfNextUnit(units[unit]))
    ++unit;
  UErrorCode error = U_ZERO_ERROR;
  return toUTF8(_units->formatters[unit].formatInt(bytes, error).toString(error));
}

}  // namespace tidemar
