#include <QAbstractButton>
#include <QComboBox>
#include <QScrollBar>
#include <QTextDocument>

#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/OverviewView.h"
#include "TidemarUI/Views/QuietStyle.h"
#include "TidemarUI/Views/Sidebar.h"
#include "TidemarUI/Views/Style.h"
#include "TidemarUI/Views/Switch.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

MainFolder lockedFolder() {
  MainFolder folder = sampleFolder(1);
  folder.isTemporary = false;
  folder.isProtectedRoot = true;
  return folder;
}

std::string linesNotIn(const std::string& before, const std::string& text) {
  std::string lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    if (before.find(line + "\n") == std::string::npos) lines += line + "\n";
  return lines;
}

class Screens : public ::testing::Test {
 protected:
  Screens() { installAccessibleRoles(); }
};

TEST_F(Screens, ASwitchThatIsOffShowsOnItsCard) {
  struct Desktop {
    const char *window, *base, *text;
  };
  for (const Desktop& desktop :
       {Desktop{"#efefef", "#ffffff", "#000000"}, Desktop{"#ffffff", "#c8c8c8", "#000000"},
        Desktop{"#353535", "#2d2d2d", "#ffffff"}}) {
    SCOPED_TRACE(desktop.base);
    QPalette palette;
    palette.setColor(QPalette::Window, desktop.window);
    palette.setColor(QPalette::Base, desktop.base);
    palette.setColor(QPalette::WindowText, desktop.text);
    const int card = style::cardFill(palette).lightness();
    EXPECT_GT(std::abs(style::switchFill(palette).lightness() - card), 32);
  }
}

TEST_F(Screens, TellAssistiveToolsAllThatTheyShow) {
  TemporarySettings deleting;
  deleting.disposal = Disposal::delete_;
  deleting.sizeLimit = 5'000'000'000;
  deleting.automatic = deleting.emptyOnRestart = true;
  const std::string page = told(*mainWindow({sampleFolder(1), sampleFolder(2)}, true));
  const struct {
    const char* name;
    std::string told;
    std::string expected;
  } rows[] = {
      {"a page", page, R"(window
list Folders
row Overview
text Folders
row folder 1, Nothing to clear, chosen - /home/ada/folder 1
row folder 2, Nothing to clear - /home/ada/folder 2
button Add a folder
button Remove from Tidemar
button Menu
text folder 1
text /home/ada/folder 1
button Show in Finder
text Temporary
text Clears old things out of this folder by the rules below.
box Temporary, checked - Clears old things out of this folder by the rules below.
text What goes
text 2 items go now - What is listed under “Now” goes when you leave this page.
text Move to Bin
list Move to Bin
row Now, 2 items · 1 MB, a, b - Show in Finder
text Clear an item when
box Not added or changed for, checked
number Not added or changed for = 90 - days
text days
box The folder is over
number The folder is over = 10, off - GB
text GB, off
box The disk is nearly full, off - Needs Delete Permanently: moving to the Bin frees no space.
box The Mac restarts
text An item's age counts from when it was added or last changed, whichever is later.
text Cleared items
picker Move to Bin
text You can put them back from Tidemar or the Bin.
)"},
      {"a page with every rule, where it differs",
       linesNotIn(page, told(*mainWindow({sampleFolder(1, deleting)}, true))),
       R"(box The folder is over, checked
number The folder is over = 5 - GB
text GB
box The disk is nearly full, checked
box The Mac restarts, checked
text Size and disk space clear the oldest items first.
picker Delete Permanently
text Frees the space now. Can't be put back.
)"},
      {"a page of a place that is never cleared, where it differs",
       linesNotIn(page, told(*mainWindow({lockedFolder()}, true))),
       R"(box Temporary, off - Tidemar doesn't clear system folders or your Desktop, Documents and home folder.
text Tidemar doesn't clear system folders or your Desktop, Documents and home folder.
)"},
      {"the overview", told(*mainWindow({sampleFolder(1)}, false)), R"(window
list Folders
row Overview, chosen
text Folders
row folder 1, Nothing to clear - /home/ada/folder 1
button Add a folder
button Remove from Tidemar, off
button Menu
text 2 items go now
text some folders
text Move to Bin
list Move to Bin
row Now, 2 items · 1 MB, a, b - Show in Finder
text Recent
list Recent
row 2 items to the Bin, folder 1 · 9:12
text 2 items to the Bin
text folder 1 · 9:12
button Put 2 items back
)"},
      {"the invitation", told(*mainWindow({}, false)), R"(window
list Folders
row Overview
button Add a folder
button Remove from Tidemar, off
button Menu
text Add a folder with + or right-click one in Finder and choose Tidemar: Make Temporary…
)"},
      {"the popover", told(*popover(fullState())), R"(window
text Finder extension is off
button Turn On
text 2 items go now
text 2 folders
text Move to Bin
list Move to Bin
row Now, 2 items · 1 MB, a, b - a: no.
text Delete Permanently
list Delete Permanently
row On restart, 2 items · 1 MB, a, b - Show in Finder
text Folders
list Folders
row folder 1, Nothing to clear - 90 days · Bin
/home/ada
row folder 2, Nothing to clear - 90 days · Bin
text Recent
list Recent
row 2 items to the Bin, folder 1 · 9:12
text 2 items to the Bin
text folder 1 · 9:12
button Put 2 items back
button Open Tidemar
button Quit Tidemar, Ctrl+Q
)"},
      {"the popover's invitation", told(*popover({})), R"(window
text Right-click a folder in Finder and choose Tidemar: Make Temporary… to start.
button Open Tidemar
button Quit Tidemar, Ctrl+Q
)"},
      {"the settings",
       told(*settings(
           {.openAtLogin = true, .openAtLoginRequiresApproval = true, .showInMenuBar = false})),
       R"(window
text Open at login
box Open at login, checked
text Needs your approval in System Settings.
button Open Login Items… - Needs your approval in System Settings.
text Show in menu bar
box Show in menu bar
text Tidemar keeps clearing your folders when its icon is hidden.
text Finder extension, login and notifications
button Set Up… - Finder extension, login and notifications
)"},
      {"the setup", told(*setup({.isOpenAtLogin = true, .isOpenAtLoginRequiresApproval = true})),
       R"(window
text Tidemar Setup
text Configure Finder integration and background cleaning.
text Not completed
text Turn on the Finder extension
text Adds "Tidemar: Make Temporary…" to Finder's right-click menu.
button Open Extension Settings…
text One switch for each file manager on this computer
text Completed
text Open at login
text Clears temporary folders in the background on launch, hourly, and after wake.
button Open Login Items…
text Not completed
text Notifications
text (optional)
text A calm daily summary before items are removed.
button Allow Notifications
)"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(row.told, row.expected) << row.name;
}

/// Where the focus goes by a key, from the first of these on, in so many steps.
std::vector<QWidget*> walk(const std::vector<QWidget*>& order, Qt::Key key) {
  std::vector<QWidget*> way;
  order.front()->setFocus();
  for (std::size_t step = 0; step < order.size(); ++step) {
    way.push_back(QApplication::focusWidget());
    QTest::keyClick(way.back(), key);
  }
  return way;
}

TEST_F(Screens, AreWalkedThroughInReadingOrderAndReallyMirrored) {
  for (const auto& row : screens()) {
    SCOPED_TRACE(row.name);
    std::vector<QRect> places;
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
      QApplication::setLayoutDirection(direction);
      const Screen screen = row.make();
      const std::vector<QWidget*> order = controlsOf(*screen);
      ASSERT_GT(order.size(), 2U);
      EXPECT_EQ(walk(order, Qt::Key_Tab), order);
      std::vector<QWidget*> back = walk(order, Qt::Key_Backtab);
      std::rotate(back.begin(), back.begin() + 1, back.end());
      std::ranges::reverse(back);
      EXPECT_EQ(back, order);
      if (dynamic_cast<MenuBarView*>(screen.get()) != nullptr) {
        EXPECT_EQ(walk(order, Qt::Key_Down), order);
      }
      for (std::size_t place = 0; place < order.size(); ++place) {
        QRect rect(order[place]->mapTo(screen.get(), QPoint()), order[place]->size());
        if (direction == Qt::LeftToRight) {
          places.push_back(rect);
        } else {
          rect.moveRight(screen->width() - 1 - rect.left());
          EXPECT_EQ(rect, places.at(place)) << spokenName(*order[place]);
        }
      }
    }
  }
  QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(Screens, TheSidebarsRowsAreGoneToByKeysAndByAssistiveToolsPastTheTitle) {
  const Screen screen = mainWindow({sampleFolder(1), sampleFolder(2)}, false);
  auto* sidebar = child<Sidebar>(*screen);
  sidebar->setFocus();
  QAccessibleInterface* list = QAccessible::queryAccessibleInterface(sidebar);
  EXPECT_EQ(list->child(1)->actionInterface(), nullptr) << "a title";
  EXPECT_FALSE(list->child(1)->state().focusable);
  EXPECT_EQ(QAccessible::queryAccessibleInterface(qApp)->role(), QAccessible::Application);
  for (const int row : {0, 2, 3}) {
    QAccessibleInterface* spoken = list->child(row);
    EXPECT_TRUE(spoken->state().focused && spoken->state().focusable);
    EXPECT_EQ(list->focusChild(), spoken);
    EXPECT_EQ(list->indexOfChild(spoken), row);
    EXPECT_EQ(list->childAt(spoken->rect().center().x(), spoken->rect().center().y()), spoken);
    QTest::keyClick(sidebar, Qt::Key_Down);
  }
  std::vector<std::optional<MainSelection>> chosen;
  dynamic_cast<MainView&>(*screen).onSelect = [&](const auto& one) { chosen.push_back(one); };
  list->child(2)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  QApplication::processEvents();
  EXPECT_EQ(chosen, std::vector{std::optional(MainSelection::folder(1))});

  const Screen rows = popover(fullState());
  auto* row = child<QAbstractButton>(*rows, "folder 2, Nothing to clear");
  QAccessible::queryAccessibleInterface(row)->actionInterface()->doAction(
      QAccessibleActionInterface::setFocusAction());
  EXPECT_TRUE(row->hasFocus());
}

TEST_F(Screens, TheSidebarTakesItsShareOfTheWindowWithinBounds) {
  const Screen screen = mainWindow({sampleFolder(1)}, true);
  const auto widthOfSidebar = [&](int width) {
    present(*screen, {style::scaled(width), 600});
    return child<Sidebar>(*screen)->width();
  };
  EXPECT_EQ(widthOfSidebar(640), style::scaled(184));
  EXPECT_EQ(widthOfSidebar(770), style::scaled(770) * 2 / 7);
  EXPECT_EQ(widthOfSidebar(3000), style::scaled(232));
}

TEST_F(Screens, WhatIsNoFolderShowsTheOverviewAndOnlyASelectedFolderIsRemoved) {
  const Screen screen = mainWindow({sampleFolder(1), sampleFolder(2), sampleFolder(3)}, false);
  auto& view = dynamic_cast<MainView&>(*screen);
  auto* sidebar = child<Sidebar>(view);
  std::vector<std::int64_t> removed;
  view.onSelect = [](const auto&) { ADD_FAILURE() << "what the program selects wasn't chosen"; };
  view.onRemoveFolder = [&](std::int64_t id) { removed.push_back(id); };
  const auto showsOverview = [&] { return child<OverviewView>(view)->isVisible(); };
  const struct {
    std::optional<MainSelection> selection;
    bool isOverview;
    std::vector<std::int64_t> removed;  // By the button, and by the key in the list.
  } rows[] = {{MainSelection::folder(2), false, {2, 2}},
              {std::nullopt, true, {}},
              {MainSelection::overview(), true, {}},
              {MainSelection::folder(9), true, {9}}};
  for (const auto& row : rows) {
    removed.clear();
    view.setSelection(row.selection);
    EXPECT_EQ(showsOverview(), row.isOverview);
    child<QToolButton>(view, std::string(labels::removeFromTidemar))->click();
    QTest::keyClick(sidebar, Qt::Key_Delete);
    EXPECT_EQ(removed, row.removed);
  }
  view.setSelection(MainSelection::folder(2));
  view.setState(shared(sampleState({sampleFolder(1), sampleFolder(3)})));
  EXPECT_TRUE(showsOverview());
  EXPECT_FALSE(sidebar->currentIndex().isValid()) << "no other is selected";
  view.setState(shared(sampleState({})));
  EXPECT_EQ(sidebar->model()->rowCount(), 1);
}

TEST_F(Screens, ASwitchAsksForTheOtherValue) {
  const Screen screen = settings({.showInMenuBar = true});
  auto& view = dynamic_cast<SettingsView&>(*screen);
  std::vector<bool> asked;
  view.onToggleOpenAtLogin = view.onToggleShowInMenuBar = [&](bool isOn) { asked.push_back(isOn); };
  auto* login = child<QCheckBox>(view, "Open at login");
  QTest::keyClick(login, Qt::Key_Space);
  QTest::keyClick(child<QCheckBox>(view, "Show in menu bar"), Qt::Key_Return);
  EXPECT_EQ(asked, (std::vector{true, false}));
  EXPECT_FALSE(login->isChecked());
  EXPECT_EQ(told(view).find("approval"), std::string::npos);

  const Screen steps = setup({});
  dynamic_cast<SetupView&>(*steps).onToggleOpenAtLogin = view.onToggleOpenAtLogin;
  child<QPushButton>(*steps, "Enable at Login")->click();
  EXPECT_EQ(asked, (std::vector{true, false, true}));
}

TEST_F(Screens, TheKnobOfASwitchIsWhiteButOnABrightAccent) {
  Switch onOff;
  onOff.resize(onOff.sizeHint());
  const auto knob = [&onOff](const QColor& accent, bool isOn) {
    QPalette palette;
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    onOff.setPalette(palette);
    onOff.show(isOn);
    const int middle = onOff.width() / 4;
    const QImage picture = onOff.grab().toImage();
    return picture.pixelColor(isOn ? picture.width() - middle : middle, picture.height() / 2);
  };
  const QColor white = Qt::white;
  EXPECT_EQ(knob(Qt::yellow, true), QColor(Qt::black));
  EXPECT_EQ(knob(Qt::yellow, false), white);
  EXPECT_EQ(knob(quietPalette(true).color(QPalette::Highlight), true), white);
}

TEST_F(Screens, KeepNoTextOfAnotherSystemsNames) {
  const SystemNames names{.fileManager = "Dolphin", .computer = "computer"};
  MainView folder(viewFormats(), "Bin", names);
  folder.setState(shared(sampleState({sampleFolder(1)})));
  folder.setSelection(MainSelection::folder(1));
  MainView invitation(viewFormats(), "Bin", names);
  MenuBarView popover(names);
  popover.setState(shared(MenuBarState()));
  SettingsView settings(names);
  SetupView setup(names);
  for (QWidget* view :
       std::initializer_list<QWidget*>{&folder, &invitation, &popover, &settings, &setup}) {
    bool isNamed = false;
    for (QWidget* widget : view->findChildren<QWidget*>()) {
      const std::string text = spokenName(*widget) + '\n' + widget->toolTip().toStdString();
      EXPECT_EQ(text.find("Finder"), text.npos) << text;
      EXPECT_EQ(text.find("Mac"), text.npos) << text;
      isNamed = isNamed || text.find("Dolphin") != text.npos;
    }
    EXPECT_TRUE(isNamed);
  }
}

TEST_F(Screens, ARowsTooltipIsNeverMarkup) {
  const QString name = QStringLiteral("<b>x</b> & y");
  MenuBarState state = fullState();
  state.folders[0].place = state.forecast[0].left = name.toStdString();
  const Screen screen = popover(state);
  for (const char* row : {"folder 1, Nothing to clear", "Now, 2 items · 1 MB, a, b"}) {
    QTextDocument drawn;
    const QString tooltip = child<QAbstractButton>(*screen, row)->toolTip();
    Qt::mightBeRichText(tooltip) ? drawn.setHtml(tooltip) : drawn.setPlainText(tooltip);
    EXPECT_TRUE(drawn.toPlainText().contains(name)) << tooltip.toStdString();
  }
}

TEST_F(Screens, WhatTakesTheFocusComesIntoSight) {
  const Screen screen = mainWindow({sampleFolder(1)}, true, {640, 420});
  child<Switch>(*screen, "Temporary")->setFocus();
  auto* picker = child<QComboBox>(*screen);
  picker->setFocus();
  QApplication::processEvents();
  EXPECT_EQ(picker->visibleRegion().boundingRect(), picker->rect());
}

TEST_F(Screens, TheSelectedRowStaysInSightInALowerWindow) {
  std::vector<MainFolder> folders;
  for (std::int64_t id = 1; id <= 12; ++id)
    folders.push_back(sampleFolder(id));
  const Screen screen = mainWindow(std::move(folders), false, {640, 900});
  auto* sidebar = child<Sidebar>(*screen);
  const QModelIndex last = sidebar->model()->index(13, 0);
  sidebar->setCurrentIndex(last);
  present(*screen, {640, 420});
  EXPECT_TRUE(sidebar->viewport()->rect().contains(sidebar->visualRect(last)));
  sidebar->scrollToTop();
  present(*screen, {640, 430});
  EXPECT_EQ(sidebar->verticalScrollBar()->value(), 0) << "unless the user scrolled away from it";
}

}  // namespace
}  // namespace tidemar::testing
