#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <ctime>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "TidemarKit/Store/DatabaseDate.h"
#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/StoredWords.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// What a parser answers; none where it throws.
template <class Parse, class Value>
auto accepted(Parse parse, const Value& value) -> std::optional<decltype(parse(value))> {
  try {
    return parse(value);
  } catch (const DatabaseError&) {
    return std::nullopt;
  }
}

std::uint64_t numberIn(std::string_view input) {
  std::uint64_t number = 0;
  for (const char c : input.substr(0, 8))
    number = number << 8U | static_cast<unsigned char>(c);
  return number;
}

/// A record with the input's bytes in all its parts.
BookmarkRecord recordOf(std::string_view input) {
  BookmarkRecord record;
  record.path = "/" + std::string(input.substr(0, std::min(input.find('\0'), std::size_t{65'535})));
  record.fileSystem.value = input.substr(0, 255);
  record.directory.inode = numberIn(input) + input.size();
  if (input.size() % 2 == 0) {
    record.directory.birthTime = {-static_cast<std::int64_t>(input.size()), 999'999'999};
  }
  if (input.size() % 3 == 0) {
    record.directory.handle = {-1, std::string(input.substr(0, longestFileHandle))};
  }
  return record;
}

/// The seconds since 1970 by the C library's calendar; none for a text of another shape and for a
/// day or time that doesn't exist.
std::optional<std::int64_t> secondsOf(const std::string& text) {
  std::tm parts{};
  unsigned milliseconds = 0;
  strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &parts);
  std::sscanf(text.c_str(), "%*19c.%3u", &milliseconds);
  const std::int64_t seconds = timegm(&parts);
  // What isn't written alike had another shape, or was another day or time.
  std::array<char, 64> same{};
  std::snprintf(same.data(), same.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03u",
                parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min,
                parts.tm_sec, milliseconds);
  return text == same.data() ? std::optional(seconds) : std::nullopt;
}

void checkText(std::string_view text) {
  const auto expected = secondsOf(std::string(text));
  const auto date = accepted(DatabaseDate::date, text);
  require(date.has_value() == expected.has_value(),
          "a text is a date where the day and the time exist, and only there");
  if (!date) return;
  require(std::floor(date->secondsSince1970) == static_cast<double>(*expected),
          "a date is the instant that the calendar tells");
  require(DatabaseDate::text(*date) == text, "a date that was read is written as it stood");
  const double before = std::nextafter(date->secondsSince1970, -1e12);
  require(text == "0000-01-01 00:00:00.000" || DatabaseDate::text(Date{before}) < text,
          "an earlier date has an earlier text");
}

void checkDate(double seconds) {
  const auto text = accepted(DatabaseDate::text, Date{seconds});
  const bool isInRange = seconds >= -62'167'219'200.0 && seconds < 253'402'300'800.0;
  require(text.has_value() == isInRange, "each date of the years is written, and no other");
  if (!text) return;
  const double stored = DatabaseDate::date(*text).secondsSince1970;
  require(stored <= seconds, "a stored date is never later than the real one");
  // Dates far from 1970 are themselves no finer than some microseconds.
  require(seconds - stored < 0.001 + 0.00004, "a stored date is true to the millisecond");
  require(DatabaseDate::text(Date{stored}) == *text, "a stored date is stored as it stood");
}

}  // namespace

void checkBookmarkRecord(std::string_view input) {
  const BookmarkRecord record = recordOf(input);
  const std::string bytes = encodeBookmark(record);
  require(decodeBookmark(bytes) == record, "what is encoded is decoded to the same record");
  require(!decodeBookmark(bytes + '\0'), "something behind the end is no bookmark");
  require(!decodeBookmark(bytes.substr(0, input.size() % bytes.size())),
          "what is cut short is no bookmark");

  const auto decoded = decodeBookmark(input);
  if (!decoded) return;
  require(encodeBookmark(*decoded) == input, "each record has one encoding");
  require(isAbsolute(decoded->path), "a bookmark's path is absolute");
  require(decoded->fileSystem.kind >= FileSystemIdentity::Kind::uuid &&
              decoded->fileSystem.kind <= FileSystemIdentity::Kind::type,
          "a file system has one of the known identities");
}

/// The input is a text, and its first 8 bytes are a date of any size and one of the years.
void checkDatabaseDate(std::string_view input) {
  checkText(input);
  const std::uint64_t bits = numberIn(input);
  checkDate(std::bit_cast<double>(bits));
  constexpr double years = 253'402'300'800.0 + 62'167'219'200.0;
  checkDate(static_cast<double>(bits) / 0x1p64 * years - 62'167'219'200.0);
}

void checkStoredWords(std::string_view input) {
  if (const auto disposal = accepted(StoredWords::disposal, input))
    require(rawValue(*disposal) == input, "a disposal has one word");

  const auto reasons = accepted(StoredWords::reasons, input);
  if (!reasons) return;
  const std::string text = StoredWords::text(*reasons);
  require(StoredWords::reasons(text) == *reasons, "a written set is read as the same set");
  for (const Rule rule : allRules) {
    // An escape can stand for any letter.
    require(reasons->contains(rule) == input.contains(rawValue(rule)) || input.contains('\\'),
            "a set has the rules whose words stand in the text");
  }
}

}  // namespace tidemar::fuzz
