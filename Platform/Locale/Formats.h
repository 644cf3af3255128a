#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Locale/Calendar.h"
#include "TidemarCore/Date.h"

namespace tidemar {

/// How one person reads days, times, numbers and sizes: a time zone with its calendar, and the
/// formatters of a locale, or of two. Making one costs a thousand times what using it does, so one
/// is made for a locale and handed on. Immutable to its user; copies share the formatters. One
/// thread at a time may use it and its copies. All texts are UTF-8.
class Formats {
 public:
  /// The locale by its ICU or POSIX name ("de_DE", "de_DE.UTF-8", "sr_RS@latin"), the zone by its
  /// IANA name. A locale whose language ICU doesn't know, "C" included, reads as American English;
  /// a zone that isn't known is UTC.
  Formats(std::string_view localeIdentifier, std::string_view timeZoneIdentifier)
      : Formats(localeIdentifier, localeIdentifier, timeZoneIdentifier) {}

  /// With a locale for days and times, and one for numbers and sizes.
  Formats(std::string_view dateLocale, std::string_view numberLocale,
          std::string_view timeZoneIdentifier);

  const Calendar& calendar() const noexcept;

  /// Short weekday, day and short month, in the locale's own order: "Wed, Nov 18".
  std::string shortDate(Date date) const;

  /// Hours and minutes, by the locale's 12 or 24 hours: "2:05 PM".
  std::string timeOfDay(Date date) const;

  /// A file size in units of thousands: "999 bytes", "12 kB", "1.5 MB", "5.25 GB". No decimals up
  /// to kilobytes, at most one for megabytes, at most two from gigabytes; the largest unit is the
  /// petabyte. Zero is a word: "Zero kB".
  std::string byteCountText(std::int64_t bytes) const;

  /// A whole number with the locale's digits and grouping: "3,650".
  std::string integerText(std::int64_t number) const;

  /// The number that was typed: in the locale's digits or plain ones, with or without grouping, and
  /// with blanks around it. Beyond 64 bits the nearest end of the range. None for any other text.
  std::optional<std::int64_t> integer(std::string_view text) const;

 private:
  class Formatters;
  std::shared_ptr<const Formatters> _formatters;
};

/// The name of the locale that the environment gives for a category, "LC_TIME" or "LC_NUMERIC": the
/// first of LC_ALL, the category and LANG that isn't empty, or else "C".
std::string currentLocaleIdentifier(const char* category);

/// The formats of this user on this system now: days and times by LC_TIME, all else by LC_NUMERIC.
Formats currentFormats();

}  // namespace tidemar
