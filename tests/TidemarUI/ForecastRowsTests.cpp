#include "TidemarUI/State/ForecastRows.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(ForecastRows, NameTheFirstTwoItems) {
  const struct {
    std::vector<FileURL> items;
    const char* summary;
    const char* names;
  } rows[] = {
      {{FileURL("/a")}, "1 item · 12 kB", "a"},
      {{FileURL("/a"), FileURL("/caf\xE9")}, "2 items · 12 kB", "a, caf\uFFFD"},
      {{FileURL("/a"), FileURL("/b"), FileURL("/c")}, "3 items · 12 kB", "a, b and 1 more"},
  };
  for (const auto& row : rows) {
    ForecastGroup group;
    group.items = row.items;
    group.totalSize = "12 kB";
    EXPECT_EQ(rowSummary(group), row.summary);
    EXPECT_EQ(rowNames(group), row.names);
  }
}

TEST(ForecastRows, StandInASectionForEachActionInTurn) {
  EXPECT_TRUE(forecastSections({}).empty());
  std::vector<ForecastGroup> groups;
  for (const char* action : {"b", "b", "D", "b"}) {
    groups.emplace_back().action = action;
    groups.back().isPermanent = groups.back().action == "D";
  }
  std::string drawn;
  for (const ForecastSection& section : forecastSections(groups)) {
    drawn += section.title + std::to_string(section.groups.size()) + " ";
    EXPECT_EQ(section.isPermanent, section.title == "D");
  }
  EXPECT_EQ(drawn, "b2 D1 b1 ") << "only neighbours stand together";
}

}  // namespace
}  // namespace tidemar::testing
