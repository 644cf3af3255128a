#include "TidemarUI/State/TomorrowNotification.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

TEST(TomorrowNotification, TellsWhatGoesOnTheUsersTomorrow) {
  // 00:30 on the 17th in Berlin, where tomorrow is the 18th; UTC still has the 16th.
  const Date now = utc(2026, 11, 16, 23, 30);
  const GoingItem today = going("today", utc(2026, 11, 17, 22, 59));
  const GoingItem first = going("first", utc(2026, 11, 17, 23));
  const GoingItem last = going("last", utc(2026, 11, 18, 22, 59));
  const GoingItem after = going("after", utc(2026, 11, 18, 23));
  const FolderStatus one = taggedStatus({first.item}, {first});
  const FolderStatus two = taggedStatus({}, {today, first, last, after});
  const struct {
    const char* name;
    FolderReport report;
    const char* body;  // Null where nothing is told.
  } rows[] = {
      {"one item, though it is due by now", sampleReport(12, one),
       "1 item will go to the Trash tomorrow."},
      {"any time of tomorrow", sampleReport(12, two), "2 items will go to the Trash tomorrow."},
      {"deleting", sampleReport(12, two, deleting()),
       "2 items will be deleted permanently tomorrow."},
      {"today and later alone", sampleReport(12, taggedStatus({}, {today, after})), nullptr},
      {"unreadable", sampleReport(12, std::nullopt), nullptr},
      {"without an id", sampleReport(std::nullopt, one), nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto told = tomorrowNotification(row.report, now, Calendar("Europe/Berlin"), "Trash");
    ASSERT_EQ(told.has_value(), row.body != nullptr);
    EXPECT_TRUE(!told || mayGoTomorrow(row.report, now));
    if (told) {
      EXPECT_EQ(*told, (TomorrowNotification{"tomorrow.12", "Downloads", row.body}));
      EXPECT_EQ(folderOfNotification(told->identifier), 12);
    }
  }
  for (const char* other : {"tomorrow.", "tomorrow.1x", "background", "12"})
    EXPECT_EQ(folderOfNotification(other), std::nullopt);
  EXPECT_FALSE(
      mayGoTomorrow(sampleReport(1, taggedStatus({}, {going("a", utc(2026, 11, 20))})), now));
  // Within one day of the user's the stamp changes at UTC's midnight.
  EXPECT_EQ(notificationStamp(now + 1799), "2026-11-16");
  EXPECT_EQ(notificationStamp(now + 1800), "2026-11-17");
  EXPECT_EQ(notificationStamp(utc(2027, 1, 2) - 0.001), "2027-01-01");
}

}  // namespace
}  // namespace tidemar::testing
