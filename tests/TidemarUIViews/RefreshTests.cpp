#include <QAbstractItemModelTester>
#include <QLineEdit>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/IconView.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/QuietStyle.h"
#include "TidemarUI/Views/Sidebar.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

/// Twenty folders, everything about which differs from one round to the next.
MainState busyState(int round) {
  std::vector<MainFolder> folders;
  for (std::int64_t id = 1; id <= 20; ++id) {
    MainFolder folder = sampleFolder(id);
    folder.distanceToGoing = std::to_string(round) + " items go now";
    folder.preview.headline = std::to_string(round) + " items go this week";
    folder.preview.forecast = {sampleGroup("Now"), sampleGroup("Tomorrow")};
    if (round % 2 == 1)
      folder.preview.forecast.insert(folder.preview.forecast.begin(), sampleGroup("Today"));
    folder.preview.forecast.push_back(sampleGroup("On restart", "Delete Permanently"));
    folders.push_back(folder);
  }
  return sampleState(std::move(folders));
}

TEST(Refresh, AHundredOfThemLoseNoKeystrokeNoFocusAndNoPlace) {
  MainView view(viewFormats(), "Bin");
  std::vector<std::int64_t> written;
  view.onChangeSettings = [&](std::int64_t, const TemporarySettings&,
                              const TemporarySettings& wanted) {
    written.push_back(*wanted.maxAgeDays);
  };
  view.setState(shared(busyState(0)));
  view.setSelection(MainSelection::folder(3));
  present(view, {640, 420});

  auto* age = child<NumberFieldView>(view, std::string(labels::ageRule));
  age->setFocus();
  age->selectAll();
  QScrollBar* bar = child<ScrollColumn>(*child<FolderDetailView>(view))->verticalScrollBar();
  auto* sidebar = child<Sidebar>(view);
  ASSERT_GT(bar->maximum(), 100);
  bar->setValue(90);
  sidebar->verticalScrollBar()->setValue(40);

  const std::string typed = "1234567890";
  for (int round = 1; round <= 100; ++round) {
    if (round % 10 == 0) QTest::keyClick(age, typed[static_cast<std::size_t>(round / 10 - 1)]);
    view.setState(shared(busyState(round)));
    QApplication::processEvents();
    ASSERT_EQ(QApplication::focusWidget(), age) << "round " << round;
    ASSERT_EQ(bar->value(), 90) << "round " << round;
    ASSERT_EQ(sidebar->verticalScrollBar()->value(), 40) << "round " << round;
  }
  EXPECT_EQ(age->text().toStdString(), typed);
  EXPECT_TRUE(written.empty());
  QTest::keyClick(age, Qt::Key_Return);
  EXPECT_EQ(written, std::vector<std::int64_t>{3650});
}

TEST(Refresh, ARowKeepsTheFocusWhileOthersComeAndGoBesideIt) {
  MenuBarView view;
  MenuBarState state = busyState(0).overview;
  view.setState(shared(state));
  present(view, view.sizeHint());
  const QPointer<MenuRow> fourth = child<MenuRow>(view, "folder 4, 0 items go now");
  ASSERT_NE(fourth, nullptr);
  fourth->setFocus();

  state.forecast.insert(state.forecast.begin(), sampleGroup("Today"));
  state.folders.erase(state.folders.begin() + 1);
  std::swap(state.folders[0], state.folders[1]);
  state.folders[2].distanceToGoing = "1 item goes now";
  view.setState(shared(state));
  QApplication::processEvents();
  EXPECT_EQ(QApplication::focusWidget(), fourth);
  EXPECT_EQ(fourth->accessibleName(), "folder 4, 1 item goes now");
}

/// The texts of all rows that stand in a list, from top to bottom.
std::vector<std::string> rowsOf(const ForecastList& list) {
  std::vector<std::pair<int, std::string>> rows;
  for (const MenuRow* row : childrenOf<MenuRow>(list)) {
    if (row->isVisibleTo(&list))
      rows.emplace_back(row->mapTo(&list, QPoint()).y(), row->content().title.toStdString());
  }
  std::ranges::sort(rows);
  std::vector<std::string> titles;
  std::ranges::copy(rows | std::views::values, std::back_inserter(titles));
  return titles;
}

TEST(Refresh, AForecastShowsEveryGroupOnceWhateverTheGroupsAreCalled) {
  using Titles = std::vector<std::string>;
  const Titles steps[] = {{"Today", "Today", "Tomorrow"},
                          {"Today", "Tomorrow"},
                          {"Tomorrow", "Today", "Today"},
                          {"Today", "Now", "Today", "Now", "Today"},
                          {"Now"},
                          {},
                          {"Today", "Today"},
                          {"Today"}};
  ForecastList list;
  present(list, {300, 400});
  for (const Titles& titles : steps) {
    std::vector<ForecastGroup> groups;
    for (const std::string& title : titles)
      groups.push_back(sampleGroup(title));
    list.setGroups(shared(groups));
    QApplication::processEvents();
    EXPECT_EQ(rowsOf(list), titles);
  }
}

TEST(Refresh, TheSidebarFollowsAnyChangeOfItsRowsAndKeepsTheirIndexes) {
  std::mt19937 random(6);
  const auto any = [&](int count) {
    return static_cast<int>(random() % static_cast<unsigned>(count));
  };
  SidebarModel model;
  const QAbstractItemModelTester tester(&model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
  std::vector<SidebarRow> before;
  for (int step = 0; step < 2000; ++step) {
    std::vector<SidebarRow> rows = before;
    if (any(3) == 0) std::ranges::shuffle(rows, random);
    std::erase_if(rows, [&](const SidebarRow&) { return any(4) == 0; });
    // Few ids for many rows, so that some come up twice.
    for (int count = any(5); count > 0; --count) {
      SidebarRow row;
      if (any(9) > 0) row.selection = MainSelection::folder(any(9));
      rows.insert(rows.begin() + any(static_cast<int>(rows.size()) + 1), row);
    }
    for (SidebarRow& row : rows)
      row.detail = std::to_string(any(3));

    std::vector<QPersistentModelIndex> indexes;
    for (int place = 0; place < model.rowCount(); ++place)
      indexes.emplace_back(model.index(place));
    model.setRows(rows);
    ASSERT_EQ(model.rowCount(), static_cast<int>(rows.size())) << "step " << step;
    for (int place = 0; place < model.rowCount(); ++place)
      ASSERT_EQ(model.row(model.index(place)), rows[static_cast<std::size_t>(place)])
          << "step " << step;
    for (std::size_t place = 0; place < before.size(); ++place) {
      const auto& selection = before[place].selection;
      const auto isSame = [&](const SidebarRow& row) { return row.selection == selection; };
      const auto earlier = std::count_if(
          before.begin(), before.begin() + static_cast<std::ptrdiff_t>(place), isSame);
      ASSERT_EQ(indexes[place].isValid(), std::ranges::count_if(rows, isSame) > earlier)
          << "step " << step;
      if (indexes[place].isValid()) {
        ASSERT_EQ(model.row(indexes[place]).selection, selection) << "step " << step;
      }
    }
    before = rows;
  }
}

TEST(Refresh, AFoldersPictureIsRenderedOnceForAllPages) {
  const auto rendered = [](const char* path) {
    return icons::folder(path).pixmap(QSize(32, 32)).cacheKey();
  };
  EXPECT_EQ(rendered("/first"), rendered("/second"));
}

TEST(Refresh, TheColoursFollowTheDesktopsAndGoBackToTheGivenOnes) {
  const QPalette given = QApplication::palette();
  adoptColorScheme(ColorScheme::dark);
  EXPECT_EQ(QApplication::palette(), given) << "another style has colours of its own";
  const QString name = QApplication::style()->name();
  QApplication::setStyle(new QuietStyle);
  for (const auto scheme : {ColorScheme::dark, ColorScheme::light, ColorScheme::dark}) {
    adoptColorScheme(scheme);
    EXPECT_EQ(style::isDark(QApplication::palette()), scheme == ColorScheme::dark);
  }
  QPalette fading = given;
  fading.setColor(QPalette::Inactive, QPalette::Window, Qt::gray);
  adoptColorScheme(ColorScheme::asGiven, fading);
  for (const auto group : {QPalette::Active, QPalette::Inactive}) {
    EXPECT_EQ(QApplication::palette().color(group, QPalette::Window),
              given.color(QPalette::Window));
  }
  QApplication::setStyle(name);
}

TEST(Refresh, PicturesStandOutFromTheirGround) {
  const QPalette given = QApplication::palette();
  const QString theme = QIcon::themeName();
  QIcon::setThemeName(QStringLiteral("none"));
  IconView warning(16);
  warning.show(icons::symbol(icons::Symbol::warning));
  warning.setFixedSize(16, 16);
  const auto hasInk = [&](const QColor& ink) {
    const QImage picture = warning.grab().toImage();
    for (int y = 0; y < picture.height(); ++y) {
      if (picture.pixelColor(picture.width() / 2, y) == ink) return true;
    }
    return false;
  };
  const auto isFolderFilled = [] {
    const QSize size(32, 32);
    const QIcon folder = icons::folder("/any");
    return folder.pixmap(size, QIcon::Selected).toImage() != folder.pixmap(size).toImage();
  };
  for (const bool isDark : {true, false, true}) {
    QApplication::setPalette(quietPalette(isDark));
    EXPECT_TRUE(hasInk(quietPalette(isDark).color(QPalette::WindowText)));
    EXPECT_FALSE(hasInk(quietPalette(!isDark).color(QPalette::WindowText)));
    EXPECT_TRUE(isFolderFilled()) << "a blue one on a blue row";
  }
  QPalette orange = quietPalette(false);
  orange.setColor(QPalette::Highlight, QColor(0xe6, 0x6a, 0x00));
  QApplication::setPalette(orange);
  EXPECT_FALSE(isFolderFilled());
  QIcon::setThemeName(theme);
  QApplication::setPalette(given);
}

TEST(Refresh, AThousandFoldersAreWalkedThroughThoughFewHaveARow) {
  std::vector<MainFolder> folders;
  for (std::int64_t id = 1; id <= 1000; ++id)
    folders.push_back(sampleFolder(id));
  MenuBarView view;
  view.setState(shared(sampleState(std::move(folders)).overview));
  present(view, {350, 600});
  QScrollBar* bar = child<ScrollColumn>(view)->verticalScrollBar();
  const int range = bar->maximum();
  const auto rowOf = [&](int id) {
    return child<MenuRow>(view, "folder " + std::to_string(id) + ", Nothing to clear");
  };
  ASSERT_NE(rowOf(1), nullptr);
  EXPECT_LT(childrenOf<MenuRow>(view).size(), 110U);

  rowOf(1)->setFocus();
  for (int id = 2; id <= 1000; ++id) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_EQ(QApplication::focusWidget(), rowOf(id)) << id;
    ASSERT_FALSE(rowOf(id)->visibleRegion().isEmpty()) << id;
  }
  EXPECT_LT(childrenOf<MenuRow>(view).size(), 110U);
  EXPECT_EQ(bar->maximum(), range) << "rows out of sight keep their room";

  bar->setValue(0);
  QApplication::processEvents();
  EXPECT_EQ(bar->value(), 0) << "the view doesn't follow a row that went out of sight";
  EXPECT_EQ(QApplication::focusWidget(), &view);
}

}  // namespace
}  // namespace tidemar::testing
