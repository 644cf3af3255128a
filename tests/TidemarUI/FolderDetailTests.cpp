#include <limits>
#include <optional>

#include <gtest/gtest.h>

#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/SettingsEdits.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar {
namespace {

using namespace testing;

constexpr std::int64_t gigabyte = 1'000'000'000;

TEST(SettingsEdits, ChangeJustWhatTheyName) {
  const TemporarySettings before = {30, 5 * gigabyte, true, true, Disposal::delete_};
  struct Row {
    const char* name;
    TemporarySettings after;
    TemporarySettings expected;
  };
  const Row rows[] = {
      {"age off",
       settingsWithAgeRule(before, false),
       {std::nullopt, 5 * gigabyte, true, true, Disposal::delete_}},
      {"age off and on again starts anew",
       settingsWithAgeRule(settingsWithAgeRule(before, false), true),
       {90, 5 * gigabyte, true, true, Disposal::delete_}},
      {"days", settingsWithMaxAgeDays(before, 7), {7, 5 * gigabyte, true, true, Disposal::delete_}},
      {"size off",
       settingsWithSizeRule(before, false),
       {30, std::nullopt, true, true, Disposal::delete_}},
      {"size on",
       settingsWithSizeRule(before, true),
       {30, 10 * gigabyte, true, true, Disposal::delete_}},
      {"gigabytes",
       settingsWithSizeLimit(before, 7),
       {30, 7 * gigabyte, true, true, Disposal::delete_}},
      {"disk rule off",
       settingsWithAutomatic(before, false),
       {30, 5 * gigabyte, false, true, Disposal::delete_}},
      {"restart off",
       settingsWithEmptyOnRestart(before, false),
       {30, 5 * gigabyte, true, false, Disposal::delete_}},
      {"over to the Bin, and the disk rule goes off",
       settingsWithDisposal(before, Disposal::bin),
       {30, 5 * gigabyte, false, true, Disposal::bin}},
      {"back to deleting, and the disk rule stays off",
       settingsWithDisposal(settingsWithDisposal(before, Disposal::bin), Disposal::delete_),
       {30, 5 * gigabyte, false, true, Disposal::delete_}},
  };
  for (const Row& row : rows)
    EXPECT_EQ(row.after, row.expected) << row.name;
}

TEST(SettingsEdits, BringNumbersToTheNearestBound) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  struct Row {
    std::int64_t entered;
    std::int64_t days;
    std::int64_t gigabytes;
  };
  const Row rows[] = {{least, 1, 1},
                      {0, 1, 1},
                      {1, 1, 1},
                      {3650, 3650, 3650},
                      {4000, 3650, 4000},
                      {100'000, 3650, 100'000},
                      {200'000, 3650, 100'000},
                      {most, 3650, 100'000}};
  for (const Row& row : rows) {
    EXPECT_EQ(settingsWithMaxAgeDays({}, row.entered).maxAgeDays, row.days) << row.entered;
    EXPECT_EQ(settingsWithSizeLimit({}, row.entered).sizeLimit, row.gigabytes * gigabyte)
        << row.entered;
  }
}

TEST(NumberFields, ShowTheStoredNumberOrTheDefault) {
  EXPECT_EQ(ageField(noRules()), (NumberField{false, 90, 1, 3650, "days"}));
  TemporarySettings settings;
  settings.maxAgeDays = 12;
  EXPECT_EQ(ageField(settings), (NumberField{true, 12, 1, 3650, "days"}));
  EXPECT_EQ(sizeField(settings), (NumberField{false, 10, 1, 100'000, "GB"}));

  struct Row {
    std::int64_t bytes;
    std::int64_t gigabytes;
  };
  const Row rows[] = {{10 * gigabyte, 10},
                      {2'499'999'999, 2},
                      {2'500'000'000, 3},
                      {499'999'999, 0},
                      {-1, 0},
                      {-2'500'000'000, -3},
                      {std::numeric_limits<std::int64_t>::max(), 9'223'372'037}};
  for (const Row& row : rows) {
    settings.sizeLimit = row.bytes;
    EXPECT_EQ(sizeField(settings), (NumberField{true, row.gigabytes, 1, 100'000, "GB"}))
        << row.bytes;
  }
}

TEST(FolderDetail, SaysWhyTheSwitchCannotBeUsed) {
  struct Row {
    bool isReadable;
    bool isProtectedRoot;
    bool canSet;
    std::optional<std::string_view> footer;
  };
  constexpr std::string_view unreadable =
      "Tidemar can't read this folder. It may be on a drive that isn't connected.";
  const Row rows[] = {
      {true, false, true, std::nullopt},
      {true, true, false,
       "Tidemar doesn't clear system folders or your Desktop, Documents and home folder."},
      {false, false, false, unreadable},
      {false, true, false, unreadable},
  };
  for (const Row& row : rows) {
    MainFolder folder;
    folder.isReadable = row.isReadable;
    folder.isProtectedRoot = row.isProtectedRoot;
    EXPECT_EQ(canSetTemporary(folder), row.canSet);
    EXPECT_EQ(temporaryFooter(folder), row.footer);
  }
}

TEST(FolderDetail, ExplainsTheRulesThatAreOn) {
  constexpr std::string_view oldestFirst = "Size and disk space clear the oldest items first.";
  constexpr std::string_view age =
      "An item's age counts from when it was added or last changed, whichever is later.";
  struct Row {
    TemporarySettings settings;
    std::string_view footer;
  };
  const Row rows[] = {
      {{90, gigabyte, false, false, Disposal::bin}, oldestFirst},
      {{std::nullopt, std::nullopt, true, true, Disposal::delete_}, oldestFirst},
      {{90, std::nullopt, false, false, Disposal::bin}, age},
      {{std::nullopt, std::nullopt, false, true, Disposal::bin}, age},
      {noRules(), "With no rule on, nothing is cleared."},
  };
  for (const Row& row : rows)
    EXPECT_EQ(rulesFooter(row.settings), row.footer);
}

TEST(FolderDetail, CallsTheBinByItsName) {
  EXPECT_EQ(disposalText(Disposal::bin, "Trash"), "Move to Trash");
  EXPECT_EQ(disposalText(Disposal::delete_, "Trash"), "Delete Permanently");
  EXPECT_EQ(automaticTooltip("Trash"),
            "Needs Delete Permanently: moving to the Trash frees no space.");
  EXPECT_EQ(deleteConfirmationMessage("Trash"),
            "They won't go to the Trash and can't be put back.");
  EXPECT_EQ(disposalFooter(Disposal::bin, "Trash"),
            (DisposalFooter{"You can put them back from Tidemar or the Trash.", false}));
  EXPECT_EQ(disposalFooter(Disposal::delete_, "Trash"),
            (DisposalFooter{"Frees the space now. Can't be put back.", true}));
  EXPECT_FALSE(canSetAutomatic({}));
  EXPECT_TRUE(canSetAutomatic(deleting()));
}

}  // namespace
}  // namespace tidemar
