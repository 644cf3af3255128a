#include "Platform/Locale/Calendar.h"
#include "Platform/Locale/Formats.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

TEST(Formats, WritesAByteCountInTheUnitThatFits) {
  const std::pair<std::int64_t, const char*> rows[] = {
      {1, "1 byte"},
      {999, "999 bytes"},
      {1'499, "1 kB"},
      {1'501, "2 kB"},
      {999'499, "999 kB"},
      {999'500, "1 MB"},
      {1'250'001, "1.3 MB"},
      {999'949'999, "999.9 MB"},
      {999'950'000, "1 GB"},
      {5'254'999'999, "5.25 GB"},
      {999'994'999'999, "999.99 GB"},
      {999'995'000'000, "1 TB"},
      {most, "9,223.37 PB"},
      {-5'000'000'000, "-5 GB"},
      {-most - 1, "-9,223.37 PB"},
  };
  const Formats formats("en_US", "UTC");
  for (const auto& [bytes, text] : rows)
    EXPECT_EQ(formats.byteCountText(bytes), text) << bytes;
}

TEST(Formats, ReadsRightInEachLanguage) {
  // Blanks that don't break stand between a number and its unit or group: U+00A0 and U+202F.
  const std::array<const char*, 7> rows[] = {
      {"en_US", "Wed, Nov 18", "2:05 PM", "12,345", "999 bytes", "5.25 GB", "Zero kB"},
      {"de_DE", "Mi., 18. Nov.", "14:05", "12.345", "999 Byte", "5,25 GB", "Null kB"},
      {"fr_FR", "mer. 18 nov.", "14:05", "12 345", "999 octets", "5,25 Go", "Zéro ko"},
      {"ar_EG", "الأربعاء، ١٨ نوفمبر", "٢:٠٥ م", "١٢٬٣٤٥", "٩٩٩ بايت", "٥٫٢٥ غ.ب", "صفر كيلوبايت"},
      // ICU has no words for Asturian numbers.
      {"ast_ES", "mié, 18 pay", "14:05", "12.345", "999 bytes", "5,25 GB", "0 kB"},
      {"sw_KE", "Jumatano, 18 Nov", "14:05", "12,345", "baiti 999", "GB 5.25", "kilobaiti sifuri"},
  };
  const auto plainBlanks = [](std::string text) {
    for (const std::string blank : {"\u00A0", "\u202F"}) {
      for (std::size_t at; (at = text.find(blank)) != std::string::npos;)
        text.replace(at, blank.size(), " ");
    }
    return text;
  };
  for (const auto& [locale, date, time, number, bytes, size, zero] : rows) {
    SCOPED_TRACE(locale);
    const Formats formats(locale, "UTC");
    EXPECT_EQ(plainBlanks(formats.shortDate(utc(2026, 11, 18, 14, 5))), date);
    EXPECT_EQ(plainBlanks(formats.timeOfDay(utc(2026, 11, 18, 14, 5))), time);
    EXPECT_EQ(plainBlanks(formats.integerText(12345)), number);
    EXPECT_EQ(plainBlanks(formats.byteCountText(999)), bytes);
    EXPECT_EQ(plainBlanks(formats.byteCountText(5'250'000'000)), size);
    EXPECT_EQ(plainBlanks(formats.byteCountText(0)), zero);
  }
}

TEST(Formats, FallsBackForALocaleThatIsNotKnown) {
  const Date date = utc(2026, 11, 18, 22, 5);
  for (const char* name : {"xx_YY", "tlh", "C", "POSIX", "", "@", "../../etc"})
    EXPECT_EQ(Formats(name, "Nowhere/Land").shortDate(date), "Wed, Nov 18") << name;
  EXPECT_EQ(Formats("de_ZZ.UTF-8@euro", "UTC").shortDate(date), "Mi., 18. Nov.");
  EXPECT_EQ(Formats("sr_RS.UTF-8@latin", "UTC").shortDate(date), "sre 18. nov");
  EXPECT_EQ(Formats("ks_IN@devanagari", "UTC").shortDate(date),
            Formats("ks_Deva_IN", "UTC").shortDate(date));
  EXPECT_NE(Formats("ks_IN@devanagari", "UTC").shortDate(date),
            Formats("ks_IN", "UTC").shortDate(date));
  EXPECT_EQ(Formats("sr_RS.UTF-8", "UTC").shortDate(date), "сре 18. нов");
  EXPECT_EQ(Formats("en_GB", "Asia/Tokyo").shortDate(date), "Thu, 19 Nov") << "its own zone";
  EXPECT_EQ(Formats("en_GB", "Asia/Tokyo").timeOfDay(date), "07:05");
}

TEST(Formats, ReadsTheNumberThatWasTyped) {
  const std::tuple<const char*, const char*, std::optional<std::int64_t>> rows[] = {
      {"en_US", " 4,000 ", 4000}, {"en_US", "-5", -5},     {"en_US", "99999999999999999999", most},
      {"de_DE", "1.000", 1000},   {"en_US", "1.000", {}},  {"en_US", "12.5", {}},
      {"fr_FR", "3 650", 3650},   {"ar_EG", "3650", 3650}, {"ar_EG", "٣٬٦٥٠", 3650},
      {"en_US", "12x", {}},       {"en_US", "", {}},       {"en_US", "∞", {}}};
  for (const auto& [locale, text, number] : rows)
    EXPECT_EQ(Formats(locale, "UTC").integer(text), number) << text;
}

TEST(Formats, TakesLocaleAndZoneFromTheEnvironment) {
  const ScopedEnvironment language("LANG", "fr_FR.UTF-8");
  const ScopedEnvironment noTime("LC_TIME", "");
  const ScopedEnvironment nothing("LC_ALL", "");
  EXPECT_EQ(currentLocaleIdentifier("LC_TIME"), "fr_FR.UTF-8");
  const ScopedEnvironment time("LC_TIME", "de_DE.UTF-8");
  const ScopedEnvironment zone("TZ", "Asia/Tokyo");
  const ScopedEnvironment numbers("LC_NUMERIC", "en_US.UTF-8");
  EXPECT_EQ(currentFormats().shortDate(utc(2026, 11, 18, 22, 30)), "Do., 19. Nov.");
  EXPECT_EQ(currentFormats().byteCountText(1'500'000), "1.5 MB");
  EXPECT_EQ(currentFormats().integerText(3650), "3,650");
  EXPECT_EQ(currentFormats().integer("3,650"), 3650);
  const ScopedEnvironment all("LC_ALL", "ja_JP.UTF-8");
  EXPECT_EQ(currentLocaleIdentifier("LC_NUMERIC"), "ja_JP.UTF-8");
}

TEST(Calendar, CountsMidnightsOfTheWallClock) {
  const std::tuple<const char*, const char*, Date, Date, std::int64_t> rows[] = {
      {"over midnight", "UTC", utc(2026, 3, 1, 23, 59), utc(2026, 3, 2), 1},
      {"back over midnight", "UTC", utc(2026, 3, 2), utc(2026, 3, 1, 23, 59), -1},
      {"before 1970", "UTC", utc(1969, 12, 31, 23, 59), utc(1970, 1, 1), 1},
      {"west", "America/Los_Angeles", utc(2026, 7, 1, 23, 59), utc(2026, 7, 2), 0},
      {"east", "Europe/Berlin", utc(2026, 7, 1, 21, 59), utc(2026, 7, 1, 22), 1},
      {"23 hours", "Europe/Berlin", utc(2026, 3, 28, 23), utc(2026, 3, 29, 22), 1},
      {"not yet 25 hours", "Europe/Berlin", utc(2026, 10, 24, 22), utc(2026, 10, 25, 22, 59), 0},
      {"25 hours", "Europe/Berlin", utc(2026, 10, 24, 22), utc(2026, 10, 25, 23), 1},
      {"begun at 1:00", "Asia/Beirut", utc(2026, 3, 28, 22), utc(2026, 3, 29, 21), 1},
      {"a day left out", "Pacific/Apia", utc(2011, 12, 30, 9, 59), utc(2011, 12, 30, 10), 2},
      {"an unknown zone is UTC", "Nowhere/Land", utc(2026, 7, 1, 23, 59), utc(2026, 7, 2), 1},
  };
  for (const auto& [name, zone, from, to, days] : rows)
    EXPECT_EQ(Calendar(zone).dayDifference(from, to), days) << name;
}

TEST(Calendar, KnowsWhereADayBeginsAndEnds) {
  const char* const newYork = "America/New_York";
  const char* const beirut = "Asia/Beirut";
  const char* const havana = "America/Havana";
  const std::tuple<const char*, const char*, Date, std::int64_t, Date, Date> rows[] = {
      {"earlier days", "UTC", utc(2026, 3, 1, 12), -1, utc(2026, 2, 28), utc(2026, 3, 1)},
      {"23 hours", newYork, utc(2026, 3, 8, 12), 0, utc(2026, 3, 8, 5), utc(2026, 3, 9, 4)},
      {"25 hours", newYork, utc(2026, 11, 1, 12), 0, utc(2026, 11, 1, 4), utc(2026, 11, 2, 5)},
      {"a week later", newYork, utc(2026, 3, 7, 12), 7, utc(2026, 3, 14, 4), utc(2026, 3, 15, 4)},
      // Midnight is skipped there, so the day begins at 1:00, and those behind it don't shift.
      {"skipped", beirut, utc(2026, 3, 29, 12), 0, utc(2026, 3, 28, 22), utc(2026, 3, 29, 21)},
      {"then", beirut, utc(2026, 3, 29, 12), 7, utc(2026, 4, 4, 21), utc(2026, 4, 5, 21)},
      // It comes twice there, and the first counts.
      {"twice", havana, utc(2026, 11, 1, 12), 0, utc(2026, 11, 1, 4), utc(2026, 11, 2, 5)},
  };
  for (const auto& [name, zone, date, daysLater, start, end] : rows) {
    SCOPED_TRACE(name);
    const auto day = Calendar(zone).day(date, daysLater);
    ASSERT_TRUE(day);
    EXPECT_EQ(day->start, start);
    EXPECT_EQ(day->end, end);
  }
}

TEST(Calendar, DoesNotFailForDatesThatNoOneCanCount) {
  const Calendar calendar("Europe/Berlin");
  const Date now = utc(2026, 1, 1);
  const double infinity = std::numeric_limits<double>::infinity();
  for (double seconds : {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e300}) {
    EXPECT_EQ(calendar.dayDifference(now, {seconds}), std::nullopt) << seconds;
    EXPECT_EQ(calendar.day({seconds}), std::nullopt) << seconds;
  }
  EXPECT_EQ(calendar.day(now, std::numeric_limits<std::int64_t>::min()), std::nullopt);
  EXPECT_EQ(calendar.dayDifference(now, now + 1e9 * secondsPerDay), 1'000'000'000);
}

}  // namespace
}  // namespace tidemar::testing
