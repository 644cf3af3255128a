#pragma once

#include <string>
#include <string_view>

#include "TidemarCore/Date.h"

/// The one form of a date in the database: "yyyy-MM-dd HH:mm:ss.SSS" in UTC, for the years 0000 to
/// 9999 of the Gregorian calendar. Such texts sort as their dates do. No locale and no time zone
/// takes part.
namespace tidemar::DatabaseDate {

/// The text of the last whole millisecond at or before the date, so that a stored date is never
/// later than the real one. A date that was read from a text gives that text again. Throws
/// `DatabaseError` for a date outside the years.
std::string text(Date date);

/// The date of exactly this form. Throws `DatabaseError` for any other text and for a day or time
/// that doesn't exist.
Date date(std::string_view text);

}  // namespace tidemar::DatabaseDate
