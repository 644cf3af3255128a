#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarUI/State/ForecastRows.h"

namespace tidemar {
namespace {

ForecastGroup groupOf(const std::vector<std::string>& names) {
  ForecastGroup group;
  group.totalSize = "12 kB";
  for (const std::string& name : names)
    group.items.emplace_back("/data/" + name);
  return group;
}

TEST(ForecastRows, NameTheFirstTwoItems) {
  struct Row {
    std::vector<std::string> items;
    const char* summary;
    const char* names;
  };
  const Row rows[] = {
      {{"a"}, "1 item · 12 kB", "a"},
      {{"a", "b"}, "2 items · 12 kB", "a, b"},
      {{"a", "b", "c"}, "3 items · 12 kB", "a, b and 1 more"},
      {{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}, "10 items · 12 kB", "a, b and 8 more"},
      {{"caf\xE9", "b"}, "2 items · 12 kB", "caf\uFFFD, b"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(rowSummary(groupOf(row.items)), row.summary);
    EXPECT_EQ(rowNames(groupOf(row.items)), row.names);
  }
}

TEST(ForecastRows, StandInASectionForEachActionInTurn) {
  struct Row {
    const char* name;
    std::string actions;  // A letter a group; capitals are permanent.
    std::vector<std::string> sections;
  };
  const Row rows[] = {
      {"nothing", "", {}},
      {"the Bin alone", "bb", {"bb"}},
      {"deleting alone", "DD", {"DD"}},
      {"the Bin, then deleting", "bbD", {"bb", "D"}},
      {"only neighbours stand together", "bDb", {"b", "D", "b"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<ForecastGroup> groups;
    for (const char action : row.actions) {
      ForecastGroup group;
      group.action = action;
      group.isPermanent = action == 'D';
      groups.push_back(group);
    }
    std::vector<std::string> sections;
    for (const ForecastSection& section : forecastSections(groups)) {
      std::string drawn;
      for (const ForecastGroup& group : section.groups)
        drawn += group.action;
      EXPECT_EQ(section.title, drawn.substr(0, 1));
      EXPECT_EQ(section.isPermanent, drawn.front() == 'D');
      sections.push_back(drawn);
    }
    EXPECT_EQ(sections, row.sections);
  }
}

}  // namespace
}  // namespace tidemar
