#include "TidemarKit/Store/DatabaseDate.h"

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <sqlite3.h>

#include "Platform/Text.h"
#include "TidemarKit/Store/DatabaseError.h"

namespace tidemar::DatabaseDate {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year_month_day;

/// 'n' stands for a digit.
constexpr std::string_view shape = "nnnn-nn-nn nn:nn:nn.nnn";

constexpr std::int64_t millisecondsPerDay = 86'400'000;
constexpr double firstSecond = -62'167'219'200;   // 0000-01-01 00:00:00
constexpr double secondBehind = 253'402'300'800;  // 10000-01-01 00:00:00

constexpr double seconds(std::int64_t milliseconds) {
  return static_cast<double>(milliseconds) / 1000;
}

/// The greatest count whose date isn't later. Multiplying alone misses it by one on either side
/// where the product rounds: 1.001 * 1000 is less than 1001.
std::int64_t millisecondsUpTo(double date) {
  auto count = static_cast<std::int64_t>(std::floor(date * 1000));
  while (seconds(count) > date)
    --count;
  while (seconds(count + 1) <= date)
    ++count;
  return count;
}

void write(std::string& text, std::size_t position, std::size_t width, std::int64_t value) {
  for (std::size_t i = width; i-- > 0; value /= 10)
    text[position + i] = static_cast<char>('0' + value % 10);
}

bool hasShape(std::string_view text) {
  if (text.size() != shape.size()) return false;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const bool isDigit = text[i] >= '0' && text[i] <= '9';
    if (shape[i] == 'n' ? !isDigit : text[i] != shape[i]) return false;
  }
  return true;
}

int number(std::string_view digits) {
  int value = 0;
  for (const char digit : digits)
    value = value * 10 + (digit - '0');
  return value;
}

std::optional<Date> parse(std::string_view text) {
  if (!hasShape(text)) return std::nullopt;
  const year_month_day day(std::chrono::year(number(text.substr(0, 4))),
                           std::chrono::month(static_cast<unsigned>(number(text.substr(5, 2)))),
                           std::chrono::day(static_cast<unsigned>(number(text.substr(8, 2)))));
  const int hour = number(text.substr(11, 2));
  const int minute = number(text.substr(14, 2));
  const int second = number(text.substr(17, 2));
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;

  const std::int64_t dayCount = sys_days(day).time_since_epoch().count();
  const std::int64_t timeOfDay =
      ((hour * 60 + minute) * 60 + second) * std::int64_t{1000} + number(text.substr(20, 3));
  return Date{seconds(dayCount * millisecondsPerDay + timeOfDay)};
}

}  // namespace

std::string text(Date date) {
  const double instant = date.secondsSince1970;
  const bool isInRange = instant >= firstSecond && instant < secondBehind;
  if (!isInRange) {
    throw DatabaseError(SQLITE_RANGE, "A date outside the years 0000 to 9999 can't be stored.");
  }
  const std::int64_t milliseconds = millisecondsUpTo(instant);
  std::int64_t dayCount = milliseconds / millisecondsPerDay;
  std::int64_t timeOfDay = milliseconds % millisecondsPerDay;
  if (timeOfDay < 0) {
    --dayCount;
    timeOfDay += millisecondsPerDay;
  }
  const year_month_day day{sys_days{days{dayCount}}};

  std::string text(shape);
  write(text, 0, 4, static_cast<int>(day.year()));
  write(text, 5, 2, static_cast<unsigned>(day.month()));
  write(text, 8, 2, static_cast<unsigned>(day.day()));
  write(text, 11, 2, timeOfDay / 3'600'000);
  write(text, 14, 2, timeOfDay / 60'000 % 60);
  write(text, 17, 2, timeOfDay / 1000 % 60);
  write(text, 20, 3, timeOfDay % 1000);
  return text;
}

Date date(std::string_view text) {
  if (const auto date = parse(text)) return *date;
  throw DatabaseError(SQLITE_MISMATCH, "“" + displayText(text) + "” isn't a date.");
}

}  // namespace tidemar::DatabaseDate
