#include "Platform/Locale/Formats.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <span>
#include <stdexcept>

#include <unicode/datefmt.h>
#include <unicode/localebuilder.h>
#include <unicode/locid.h>
#include <unicode/numberformatter.h>
#include <unicode/numfmt.h>
#include <unicode/timezone.h>

#include "Platform/Locale/ByteCountFormat.h"
#include "Platform/Locale/UnicodeText.h"

namespace tidemar {
namespace {

bool isLanguageKnown(const icu::Locale& locale) {
  std::int32_t count = 0;
  const icu::Locale* const available = icu::Locale::getAvailableLocales(count);
  return std::ranges::any_of(std::span(available, static_cast<std::size_t>(count)),
                             [&](const icu::Locale& known) {
                               return std::strcmp(known.getLanguage(), locale.getLanguage()) == 0;
                             });
}

/// The script that a POSIX modifier such as "@latin" names; ICU takes only its own names of them.
std::string_view scriptOfModifier(std::string_view modifier) {
  if (modifier == "latin") return "Latn";
  if (modifier == "cyrillic") return "Cyrl";
  if (modifier == "devanagari") return "Deva";
  return {};
}

icu::Locale knownLocale(std::string_view identifier) {
  icu::Locale locale = icu::Locale::createCanonical(std::string(identifier).c_str());
  const std::size_t at = identifier.find('@');
  const std::string_view script =
      at == std::string_view::npos ? "" : scriptOfModifier(identifier.substr(at + 1));
  if (!script.empty()) {
    UErrorCode error = U_ZERO_ERROR;
    locale = icu::LocaleBuilder()
                 .setLanguage(locale.getLanguage())
                 .setRegion(locale.getCountry())
                 .setScript({script.data(), static_cast<std::int32_t>(script.size())})
                 .build(error);
  }
  return isLanguageKnown(locale) ? locale : icu::Locale::getUS();
}

std::unique_ptr<icu::DateFormat> dateFormat(const char16_t* skeleton, const icu::Locale& locale,
                                            std::string_view timeZoneIdentifier) {
  UErrorCode error = U_ZERO_ERROR;
  std::unique_ptr<icu::DateFormat> format(
      icu::DateFormat::createInstanceForSkeleton(skeleton, locale, error));
  if (U_FAILURE(error)) throw std::runtime_error("Couldn't read the system's locale data.");
  format->adoptTimeZone(icu::TimeZone::createTimeZone(fromUTF8(timeZoneIdentifier)));
  return format;
}

std::unique_ptr<icu::NumberFormat> integerParser(const icu::Locale& locale) {
  UErrorCode error = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberFormat> format(icu::NumberFormat::createInstance(locale, error));
  if (U_FAILURE(error)) throw std::runtime_error("Couldn't read the system's locale data.");
  format->setParseIntegerOnly(true);
  return format;
}

std::string text(const icu::DateFormat& format, Date date) {
  icu::UnicodeString result;
  return toUTF8(format.format(date.secondsSince1970 * 1000, result));
}

}  // namespace

class Formats::Formatters {
 public:
  Formatters(const icu::Locale& dates, const icu::Locale& numbers,
             std::string_view timeZoneIdentifier)
      : calendar(timeZoneIdentifier),
        shortDate(dateFormat(u"EEEdMMM", dates, timeZoneIdentifier)),
        timeOfDay(dateFormat(u"jm", dates, timeZoneIdentifier)),
        byteCount(numbers.getName()),
        integer(icu::number::NumberFormatter::withLocale(numbers)),
        parser(integerParser(numbers)) {}

  const Calendar calendar;
  const std::unique_ptr<const icu::DateFormat> shortDate;
  const std::unique_ptr<const icu::DateFormat> timeOfDay;
  const ByteCountFormat byteCount;
  const icu::number::LocalizedNumberFormatter integer;
  const std::unique_ptr<const icu::NumberFormat> parser;
};

Formats::Formats(std::string_view dateLocale, std::string_view numberLocale,
                 std::string_view timeZoneIdentifier)
    : _formatters(std::make_shared<const Formatters>(
          knownLocale(dateLocale), knownLocale(numberLocale), timeZoneIdentifier)) {}

const Calendar& Formats::calendar() const noexcept {
  return _formatters->calendar;
}

std::string Formats::shortDate(Date date) const {
  return text(*_formatters->shortDate, date);
}

std::string Formats::timeOfDay(Date date) const {
  return text(*_formatters->timeOfDay, date);
}

std::string Formats::byteCountText(std::int64_t bytes) const {
  return _formatters->byteCount.text(bytes);
}

std::string Formats::integerText(std::int64_t number) const {
  UErrorCode error = U_ZERO_ERROR;
  return toUTF8(_formatters->integer.formatInt(number, error).toString(error));
}

std::optional<std::int64_t> Formats::integer(std::string_view text) const {
  const icu::UnicodeString typed = fromUTF8(text).trim();
  icu::Formattable number;
  icu::ParsePosition end;
  _formatters->parser->parse(typed, number, end);
  if (typed.isEmpty() || end.getIndex() != typed.length()) return std::nullopt;
  UErrorCode error = U_ZERO_ERROR;
  if (!std::isfinite(number.getDouble(error))) return std::nullopt;
  // A number beyond the range comes back as the range's end, with an error that adds nothing.
  return number.getInt64(error);
}

std::string currentLocaleIdentifier(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return "C";
}

Formats currentFormats() {
  return Formats(currentLocaleIdentifier("LC_TIME"), currentLocaleIdentifier("LC_NUMERIC"),
                 currentTimeZoneIdentifier());
}

}  // namespace tidemar
