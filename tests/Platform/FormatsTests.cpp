#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "Platform/Locale/Formats.h"
#include "tests/support/Dates.h"

namespace tidemar {
namespace {

using testing::utc;

TEST(Formats, WritesAByteCountInTheUnitThatFits) {
  struct Row {
    std::int64_t bytes;
    const char* text;
  };
  const Row rows[] = {
      {0, "Zero kB"},
      {1, "1 byte"},
      {2, "2 bytes"},
      {999, "999 bytes"},
      {1'000, "1 kB"},
      {1'499, "1 kB"},
      {1'501, "2 kB"},
      {999'499, "999 kB"},
      {999'500, "1 MB"},
      {1'250'001, "1.3 MB"},
      {12'000'000, "12 MB"},
      {999'949'999, "999.9 MB"},
      {999'950'000, "1 GB"},
      {5'000'000'000, "5 GB"},
      {5'250'000'000, "5.25 GB"},
      {5'254'999'999, "5.25 GB"},
      {999'994'999'999, "999.99 GB"},
      {999'995'000'000, "1 TB"},
      {100'000'000'000'000, "100 TB"},
      {1'500'000'000'000'000, "1.5 PB"},
      {std::numeric_limits<std::int64_t>::max(), "9,223.37 PB"},
      {-1, "-1 byte"},
      {-5'000'000'000, "-5 GB"},
      {std::numeric_limits<std::int64_t>::min(), "-9,223.37 PB"},
  };
  const Formats formats("en_US", "UTC");
  for (const Row& row : rows)
    EXPECT_EQ(formats.byteCountText(row.bytes), row.text) << row.bytes;
}

TEST(Formats, ReadsRightInEachLanguage) {
  struct Row {
    const char* locale;
    const char* date;
    const char* time;
    const char* number;
    const char* bytes;
    const char* size;
    const char* zero;
  };
  // Blanks that don't break stand between a number and its unit or group: U+00A0 and U+202F.
  const Row rows[] = {
      {"en_US", "Wed, Nov 18", "2:05 PM", "12,345", "999 bytes", "5.25 GB", "Zero kB"},
      {"en_GB", "Wed, 18 Nov", "14:05", "12,345", "999 bytes", "5.25 GB", "Zero kB"},
      {"de_DE", "Mi., 18. Nov.", "14:05", "12.345", "999 Byte", "5,25 GB", "Null kB"},
      {"fr_FR", "mer. 18 nov.", "14:05", "12\u202F345", "999 octets", "5,25 Go", "Zéro ko"},
      {"ja_JP", "11月18日(水)", "14:05", "12,345", "999 バイト", "5.25 GB", "〇 KB"},
      {"ar_EG", "الأربعاء، ١٨ نوفمبر", "٢:٠٥ م", "١٢٬٣٤٥", "٩٩٩ بايت", "٥٫٢٥ غ.ب", "صفر كيلوبايت"},
      {"pl_PL", "śr., 18 lis", "14:05", "12 345", "999 bajtów", "5,25 GB", "Zero kB"},
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
  for (const Row& row : rows) {
    SCOPED_TRACE(row.locale);
    const Formats formats(row.locale, "UTC");
    EXPECT_EQ(plainBlanks(formats.shortDate(utc(2026, 11, 18, 14, 5))), row.date);
    EXPECT_EQ(plainBlanks(formats.timeOfDay(utc(2026, 11, 18, 14, 5))), row.time);
    EXPECT_EQ(plainBlanks(formats.integerText(12345)), plainBlanks(row.number));
    EXPECT_EQ(plainBlanks(formats.byteCountText(999)), row.bytes);
    EXPECT_EQ(plainBlanks(formats.byteCountText(5'250'000'000)), row.size);
    EXPECT_EQ(plainBlanks(formats.byteCountText(0)), row.zero);
  }
}

TEST(Formats, FallsBackForALocaleThatIsNotKnown) {
  const Date date = utc(2026, 11, 18, 14, 5);
  for (const char* name : {"xx_YY", "tlh", "C", "C.UTF-8", "POSIX", "", "@", "../../etc"}) {
    const Formats formats(name, "Nowhere/Land");
    EXPECT_EQ(formats.shortDate(date), "Wed, Nov 18") << name;
    EXPECT_EQ(formats.byteCountText(0), "Zero kB") << name;
  }
  EXPECT_EQ(Formats("de_ZZ.UTF-8@euro", "UTC").shortDate(date), "Mi., 18. Nov.");
  EXPECT_EQ(Formats("sr_RS.UTF-8@latin", "UTC").shortDate(date), "sre 18. nov");
  EXPECT_EQ(Formats("sr_RS.UTF-8", "UTC").shortDate(date), "сре 18. нов");
}

TEST(Formats, WritesDatesInItsOwnZone) {
  const Date date = utc(2026, 11, 18, 22, 30);
  EXPECT_EQ(Formats("en_GB", "Asia/Tokyo").shortDate(date), "Thu, 19 Nov");
  EXPECT_EQ(Formats("en_GB", "Asia/Tokyo").timeOfDay(date), "07:30");
  EXPECT_EQ(Formats("en_GB", "America/Los_Angeles").shortDate(date), "Wed, 18 Nov");
}

TEST(Formats, ReadsTheNumberThatWasTyped) {
  struct Row {
    const char* locale;
    const char* text;
    std::optional<std::int64_t> number;
  };
  const Row rows[] = {
      {"en_US", "4000", 4000},
      {"en_US", " 4,000 ", 4000},
      {"en_US", "-5", -5},
      {"en_US", "99999999999999999999", std::numeric_limits<std::int64_t>::max()},
      {"en_US", "12.5", std::nullopt},
      {"en_US", "1.000", std::nullopt},
      {"de_DE", "1.000", 1000},
      {"fr_FR", "3 650", 3650},
      {"ar_EG", "٣٬٦٥٠", 3650},
      {"ar_EG", "3650", 3650},
      {"en_US", "", std::nullopt},
      {"en_US", "12x", std::nullopt},
      {"en_US", "NaN", std::nullopt},
      {"en_US", "∞", std::nullopt},
  };
  for (const Row& row : rows)
    EXPECT_EQ(Formats(row.locale, "UTC").integer(row.text), row.number) << row.text;
}

/// Sets an environment variable for one test.
class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* name, const char* value) : _name(name) {
    if (const char* before = std::getenv(name)) _before = before;
    setenv(name, value, 1);
  }
  ~EnvironmentVariable() {
    if (_before) {
      setenv(_name, _before->c_str(), 1);
    } else {
      unsetenv(_name);
    }
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

 private:
  const char* _name;
  std::optional<std::string> _before;
};

TEST(Formats, TakesLocaleAndZoneFromTheEnvironment) {
  struct Row {
    const char* name;
    const char* all;
    const char* time;
    const char* language;
    const char* expected;
  };
  const Row rows[] = {
      {"the language alone", "", "", "fr_FR.UTF-8", "fr_FR.UTF-8"},
      {"dates in another locale than the language", "", "de_DE.UTF-8", "en_US.UTF-8",
       "de_DE.UTF-8"},
      {"one for everything", "ja_JP.UTF-8", "de_DE.UTF-8", "en_US.UTF-8", "ja_JP.UTF-8"},
      {"nothing set", "", "", "", "C"},
  };
  for (const Row& row : rows) {
    const EnvironmentVariable all("LC_ALL", row.all);
    const EnvironmentVariable time("LC_TIME", row.time);
    const EnvironmentVariable language("LANG", row.language);
    EXPECT_EQ(currentLocaleIdentifier(), row.expected) << row.name;
  }
  const EnvironmentVariable all("LC_ALL", "de_DE.UTF-8");
  const EnvironmentVariable zone("TZ", "Asia/Tokyo");
  EXPECT_EQ(currentFormats().shortDate(utc(2026, 11, 18, 22, 30)), "Do., 19. Nov.");
}

}  // namespace
}  // namespace tidemar
