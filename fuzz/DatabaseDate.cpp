#include "TidemarKit/Store/DatabaseDate.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <tuple>

#include "TidemarKit/Store/DatabaseError.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// The seconds since 1970 by the C library's calendar; none for a text of another shape and for a
/// day or time that doesn't exist.
std::optional<std::int64_t> secondsOf(std::string_view text) {
  constexpr std::string_view shape = "nnnn-nn-nn nn:nn:nn.nnn";
  const bool hasShape = std::ranges::equal(text, shape, [](char c, char wanted) {
    return wanted == 'n' ? std::isdigit(static_cast<unsigned char>(c)) != 0 : c == wanted;
  });
  if (!hasShape) return std::nullopt;
  const auto number = [&](std::size_t at, std::size_t width) {
    return std::stoi(std::string(text.substr(at, width)));
  };
  std::tm parts{};
  parts.tm_year = number(0, 4) - 1900;
  parts.tm_mon = number(5, 2) - 1;
  parts.tm_mday = number(8, 2);
  parts.tm_hour = number(11, 2);
  parts.tm_min = number(14, 2);
  parts.tm_sec = number(17, 2);
  std::tm counted = parts;
  const std::int64_t seconds = timegm(&counted);
  const auto fields = [](const std::tm& tm) {
    return std::tuple(tm.tm_year, tm.tm_mon, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
  };
  return fields(counted) == fields(parts) ? std::optional(seconds) : std::nullopt;
}

void checkText(std::string_view text) {
  const auto expected = secondsOf(text);
  try {
    const Date date = DatabaseDate::date(text);
    require(expected.has_value(), "a text is a date only where the day and the time exist");
    require(std::floor(date.secondsSince1970) == static_cast<double>(*expected),
            "a date is the instant that the calendar tells");
    require(DatabaseDate::text(date) == text, "a date that was read is written as it stood");
    const double before = std::nextafter(date.secondsSince1970, -1e12);
    require(text == "0000-01-01 00:00:00.000" || DatabaseDate::text(Date{before}) < text,
            "an earlier date has an earlier text");
  } catch (const DatabaseError&) {
    require(!expected, "each day and time that exists is read");
  }
}

void checkDate(double seconds) {
  const bool isInRange = seconds >= -62'167'219'200.0 && seconds < 253'402'300'800.0;
  try {
    const std::string text = DatabaseDate::text(Date{seconds});
    require(isInRange, "a date outside the years isn't written");
    const double stored = DatabaseDate::date(text).secondsSince1970;
    require(stored <= seconds, "a stored date is never later than the real one");
    // Dates far from 1970 are themselves no finer than some microseconds.
    require(seconds - stored < 0.001 + 0.00004, "a stored date is true to the millisecond");
    require(DatabaseDate::text(Date{stored}) == text, "a stored date is stored as it stood");
  } catch (const DatabaseError&) {
    require(!isInRange, "each date of the years is written");
  }
}

}  // namespace

/// The input is a text, and its first 8 bytes are a date of any size and one of the years.
void check(std::string_view input) {
  checkText(input);
  std::uint64_t bits = 0;
  for (const char c : input.substr(0, 8))
    bits = bits << 8U | static_cast<unsigned char>(c);
  checkDate(std::bit_cast<double>(bits));
  constexpr double years = 253'402'300'800.0 + 62'167'219'200.0;
  checkDate(static_cast<double>(bits) / 0x1p64 * years - 62'167'219'200.0);
}

}  // namespace tidemar::fuzz
