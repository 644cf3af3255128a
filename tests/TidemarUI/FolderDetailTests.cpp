#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/SettingsEdits.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

constexpr std::int64_t gigabyte = 1'000'000'000;

/// The rules that are on, and what becomes of the items.
std::string drawn(const TemporarySettings& settings) {
  std::string text;
  if (settings.maxAgeDays) text += std::to_string(*settings.maxAgeDays) + " days, ";
  if (settings.sizeLimit) text += std::to_string(*settings.sizeLimit / gigabyte) + " GB, ";
  if (settings.automatic) text += "disk, ";
  if (settings.emptyOnRestart) text += "restart, ";
  return text + (settings.disposal == Disposal::delete_ ? "delete" : "bin");
}

TEST(SettingsEdits, ChangeJustWhatTheyName) {
  const TemporarySettings all = {30, 5 * gigabyte, true, true, Disposal::delete_};
  const TemporarySettings ageless = settingsWithAgeRule(all, false);
  const TemporarySettings binned = settingsWithDisposal(all, Disposal::bin);
  const struct {
    TemporarySettings after;
    const char* expected;
  } rows[] = {
      {ageless, "5 GB, disk, restart, delete"},
      {settingsWithAgeRule(ageless, true), "90 days, 5 GB, disk, restart, delete"},
      {settingsWithMaxAgeDays(all, 7), "7 days, 5 GB, disk, restart, delete"},
      {settingsWithSizeRule(all, false), "30 days, disk, restart, delete"},
      {settingsWithSizeRule(all, true), "30 days, 10 GB, disk, restart, delete"},
      {settingsWithSizeLimit(all, 7), "30 days, 7 GB, disk, restart, delete"},
      {settingsWithAutomatic(all, false), "30 days, 5 GB, restart, delete"},
      {settingsWithEmptyOnRestart(all, false), "30 days, 5 GB, disk, delete"},
      // To delete again doesn't bring the disk rule back.
      {binned, "30 days, 5 GB, restart, bin"},
      {settingsWithDisposal(binned, Disposal::delete_), "30 days, 5 GB, restart, delete"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(drawn(row.after), row.expected);
  EXPECT_FALSE(canSetAutomatic(binned));
  EXPECT_TRUE(canSetAutomatic(all));
}

TEST(SettingsEdits, BringNumbersToTheNearestBound) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  const struct {
    std::int64_t entered;
    std::int64_t days;
    std::int64_t gigabytes;
  } rows[] = {{least, 1, 1}, {0, 1, 1}, {4000, 3650, 4000}, {most, 3650, 100'000}};
  for (const auto& row : rows) {
    EXPECT_EQ(settingsWithMaxAgeDays({}, row.entered).maxAgeDays, row.days);
    EXPECT_EQ(settingsWithSizeLimit({}, row.entered).sizeLimit, row.gigabytes * gigabyte);
  }
}

TEST(NumberFields, ShowTheStoredNumberOrTheDefault) {
  EXPECT_EQ(ageField(noRules()), (NumberField{false, 90, 1, 3650, "days"}));
  TemporarySettings settings;
  settings.maxAgeDays = 12;
  EXPECT_EQ(ageField(settings), (NumberField{true, 12, 1, 3650, "days"}));
  EXPECT_EQ(sizeField(settings), (NumberField{false, 10, 1, 100'000, "GB"}));

  const struct {
    std::int64_t bytes;
    std::int64_t gigabytes;
  } rows[] = {{2'499'999'999, 2},
              {2'500'000'000, 3},
              {-2'500'000'000, -3},
              {std::numeric_limits<std::int64_t>::max(), 9'223'372'037}};
  for (const auto& row : rows) {
    settings.sizeLimit = row.bytes;
    EXPECT_EQ(sizeField(settings), (NumberField{true, row.gigabytes, 1, 100'000, "GB"}));
  }
}

TEST(FolderDetail, ExplainsWhatIsOnAndWhatCannotBe) {
  const TemporarySettings byDisk = {std::nullopt, std::nullopt, true, true, Disposal::delete_};
  TemporarySettings bySize;
  bySize.sizeLimit = gigabyte;
  EXPECT_EQ(rulesFooter(bySize), rulesFooter(byDisk)) << "both take the oldest items first";
  EXPECT_EQ(rulesFooter(clearingOnRestart(noRules())), rulesFooter({})) << "both count the age";
  EXPECT_NE(rulesFooter(bySize), rulesFooter({}));
  EXPECT_EQ(rulesFooter(noRules()), "With no rule on, nothing is cleared.");
  EXPECT_TRUE(disposalFooter(Disposal::delete_, "Bin").isWarning);
  EXPECT_FALSE(disposalFooter(Disposal::bin, "Bin").isWarning);

  for (const bool isReadable : {false, true}) {
    for (const bool isProtectedRoot : {false, true}) {
      MainFolder folder;
      folder.isReadable = isReadable;
      folder.isProtectedRoot = isProtectedRoot;
      EXPECT_EQ(canSetTemporary(folder), isReadable && !isProtectedRoot);
      EXPECT_EQ(temporaryFooter(folder).has_value(), !canSetTemporary(folder));
      folder.isTemporary = true;
      EXPECT_EQ(canSetTemporary(folder), isReadable) << "a tag can be taken off";
    }
  }
}

}  // namespace
}  // namespace tidemar::testing
