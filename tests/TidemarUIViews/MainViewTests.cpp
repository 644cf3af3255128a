#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/OverviewView.h"
#include "TidemarUI/Views/Sidebar.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

class MainViewTest : public ::testing::Test {
 protected:
  MainViewTest() {
    view.onSelect = [this](const auto& selection) { selections.push_back(selection); };
    view.onRemoveFolder = [this](std::int64_t id) { removed.push_back(id); };
    view.setState(shared(sampleState({sampleFolder(1), sampleFolder(2), sampleFolder(3)})));
    present(view, {820, 560});
  }

  bool showsOverview() { return child<OverviewView>(view)->isVisible(); }

  QToolButton* minus() { return child<QToolButton>(view, std::string(labels::removeFromTidemar)); }

  MainView view{viewFormats(), "Bin"};
  std::vector<std::optional<MainSelection>> selections;
  std::vector<std::int64_t> removed;
};

TEST_F(MainViewTest, WhatIsNoFolderShowsTheOverview) {
  const struct {
    const char* name;
    std::optional<MainSelection> selection;
    bool isOverview;
    bool canRemove;
  } rows[] = {
      {"a folder", MainSelection::folder(2), false, true},
      {"no selection", std::nullopt, true, false},
      {"the overview", MainSelection::overview(), true, false},
      {"a folder that is gone", MainSelection::folder(9), true, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    view.setSelection(row.selection);
    EXPECT_EQ(showsOverview(), row.isOverview);
    EXPECT_EQ(minus()->isEnabled(), row.canRemove);
  }
  EXPECT_TRUE(selections.empty()) << "what the program selects is not reported as chosen";
}

TEST_F(MainViewTest, ARemovedFolderLeavesTheOverviewAndSelectsNoOther) {
  view.setSelection(MainSelection::folder(2));
  view.setState(shared(sampleState({sampleFolder(1), sampleFolder(3)})));
  EXPECT_TRUE(showsOverview());
  EXPECT_TRUE(selections.empty());
  EXPECT_FALSE(child<Sidebar>(view)->currentIndex().isValid());
  view.setState(shared(sampleState({})));
  EXPECT_EQ(child<Sidebar>(view)->model()->rowCount(), 1);
}

TEST_F(MainViewTest, MinusRemovesTheSelectedFolder) {
  view.setSelection(MainSelection::overview());
  minus()->click();
  EXPECT_TRUE(removed.empty());
  view.setSelection(MainSelection::folder(3));
  minus()->click();
  EXPECT_EQ(removed, std::vector<std::int64_t>{3});
  // The key does the same in the list, and nothing on its other rows.
  auto* sidebar = child<Sidebar>(view);
  QTest::keyClick(sidebar, Qt::Key_Delete);
  view.setSelection(MainSelection::overview());
  QTest::keyClick(sidebar, Qt::Key_Delete);
  EXPECT_EQ(removed, (std::vector<std::int64_t>{3, 3}));
}

}  // namespace
}  // namespace tidemar::testing
