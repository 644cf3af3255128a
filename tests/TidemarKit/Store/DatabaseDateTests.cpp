#include <cmath>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "TidemarKit/Store/DatabaseDate.h"
#include "TidemarKit/Store/DatabaseError.h"

namespace tidemar {
namespace {

TEST(DatabaseDate, writesTheLastWholeMillisecondInUTC) {
  const std::pair<double, const char*> rows[] = {
      {0, "1970-01-01 00:00:00.000"},
      {1763763095.25, "2025-11-21 22:11:35.250"},
      // Whole milliseconds, which multiplying would miss or reach.
      {1.001, "1970-01-01 00:00:01.001"},
      {std::nextafter(99195113.658, 0), "1973-02-22 02:11:53.657"},
      // What is finer never makes it later.
      {1763763095.9999, "2025-11-21 22:11:35.999"},
      {std::nextafter(1763763096.0, 0), "2025-11-21 22:11:35.999"},
      {-0.001, "1969-12-31 23:59:59.999"},
      {-0.0001, "1969-12-31 23:59:59.999"},
      {-86400, "1969-12-31 00:00:00.000"},
      {1709164800, "2024-02-29 00:00:00.000"},
      {4107542400, "2100-03-01 00:00:00.000"},
      {-62167219200, "0000-01-01 00:00:00.000"},
      {253402300799.9999, "9999-12-31 23:59:59.999"},
  };
  for (const auto& [date, text] : rows)
    EXPECT_EQ(DatabaseDate::text(Date{date}), text);
}

TEST(DatabaseDate, refusesDatesItCannotWrite) {
  for (const double date :
       {253402300800.0, -62167219200.001, 1e300, std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THROW(DatabaseDate::text(Date{date}), DatabaseError) << date;
  }
}

TEST(DatabaseDate, refusesEveryOtherText) {
  for (const char* text :
       {"", "2025-11-21", "2025-11-21 22:11:35", "2025-11-21T22:11:35.250",
        "2025-11-21 22:11:35.25", "2025-11-21 22:11:35.2500", "2025-11-21 22:11:35,250",
        " 2025-11-21 22:11:35.25", "2025-11-21 22:11:35.250Z", "2025-11-2x 22:11:35.250",
        "+025-11-21 22:11:35.250", "2025-13-01 00:00:00.000", "2025-00-01 00:00:00.000",
        "2025-02-29 00:00:00.000", "2025-04-31 00:00:00.000", "2025-04-00 00:00:00.000",
        "2025-11-21 24:00:00.000", "2025-11-21 22:60:00.000", "2025-11-21 22:11:60.000"}) {
    EXPECT_THROW(DatabaseDate::date(text), DatabaseError) << text;
  }
}

TEST(DatabaseDate, everyMillisecondReadIsWrittenAsItStood) {
  for (const char* second : {"0000-01-01 00:00:00", "1900-02-28 23:59:59", "1969-12-31 23:59:59",
                             "1970-01-01 00:00:00", "2025-11-21 22:11:35", "9999-12-31 23:59:59"}) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
      const std::string digits = std::to_string(1000 + millisecond).substr(1);
      const std::string text = std::string(second) + "." + digits;
      ASSERT_EQ(DatabaseDate::text(DatabaseDate::date(text)), text);
    }
  }
  EXPECT_EQ(DatabaseDate::date("2025-11-21 22:11:35.250").secondsSince1970, 1763763095.25);
}

}  // namespace
}  // namespace tidemar
