#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QMenu>
#include <QMimeData>
#include <QScreen>

#include "FakeServices.h"
#include "Tidemar/MainContainerView.h"
#include "Tidemar/Popover.h"
#include "Tidemar/PreferenceContainerViews.h"
#include "Tidemar/TrayMenu.h"
#include "Tidemar/WindowCoordinator.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/Sidebar.h"
#include "TidemarUIViews/ViewSamples.h"

namespace tidemar::testing {
namespace {

struct HandedUpdateService : UpdateService {
  bool canCheckForUpdates() const override { return canCheck; }
  void checkForUpdates() override { ++checks; }
  bool canCheck = false;
  int checks = 0;
};

class WindowCoordinatorTest : public ::testing::Test {
 protected:
  WindowCoordinatorTest() {
    installAccessibleRoles();
    first = world.makeTemporary("/home/ada/Downloads");
    second = world.makeTemporary("/home/ada/Scratch");
  }

  ~WindowCoordinatorTest() override { finishWork(); }

  ScreenContext context() {
    return {.model = *world.model,
            .updates = updates,
            .defaults = world.standardDefaults,
            .currentDate = [this] { return Date{world.now}; },
            .currentFormats = [] { return Formats("en_US", "UTC"); },
            .showInFileManager = [this](const auto& items) { asked += items.at(0).path() + " "; },
            .showExtensionManagement = [this] { asked += "extension "; },
            .openLoginItemsSettings = [this] { asked += "login items "; },
            .quit = [this] { asked += "quit "; }};
  }

  MainView& mainView() { return *child<MainView>(*windows.window("main")); }

  std::optional<MainSelection> selection() { return windows.mainWindowState().selection(); }

  void finishWork() {
    do {
      QApplication::processEvents();
    } while (world.ordered.stepCount() > 0);
  }

  /// Whether a cycle follows that selection.
  bool startsCycle(const std::optional<MainSelection>& selection,
                   MainWindowState::Cause cause = MainWindowState::Cause::user) {
    world.now = world.now + 1;
    windows.mainWindowState().select(selection, cause);
    finishWork();
    waitFor(world.model->refreshReports());
    return world.model->reports().front().folder.lastRunAt == Date{world.now};
  }

  /// The entries of a menu that are to be seen; "-" is a separator.
  std::string shown(const QList<QAction*>& actions) {
    finishWork();
    std::string text;
    for (const QAction* action : actions) {
      if (action->isVisible())
        text += (action->isSeparator() ? "-" : action->text().toStdString()) + "|";
    }
    return text;
  }

  ModelWorld world;
  HandedUpdateService service;
  Updates updates{service};
  WindowCoordinator windows{context()};
  std::int64_t first = 0;
  std::int64_t second = 0;
  std::string asked;  ///< Of the desktop.
};

TEST_F(WindowCoordinatorTest, TheScreensTellWhatTheModelHoldsAndTheirControlsReachIt) {
  world.disk.draw("/home/ada/Downloads/old" + ModelWorld::aged(91));
  world.runCycle();
  windows.showMain(FileURL("/home/ada/Downloads"));
  const auto press = [this](QWidget& screen, const char* control) {
    finishWork();
    auto* button = child<QAbstractButton>(screen, control);
    ASSERT_NE(button, nullptr) << control << " isn't among\n" << told(screen);
    button->click();
    finishWork();
    waitFor(world.model->refreshReports());
    finishWork();
  };
  const auto pressed = [&](const char* control) -> TemporarySettings {
    press(*windows.window("main"), control);
    return world.model->reports().front().folder.settings;
  };
  EXPECT_EQ(pressed("The folder is over").sizeLimit, 10'000'000'000);
  EXPECT_TRUE(pressed("The Mac restarts").emptyOnRestart);
  EXPECT_EQ(pressed("Not added or changed for").maxAgeDays, std::nullopt);
  EXPECT_NE(told(mainView()).find("box The folder is over, checked\n"), std::string::npos);
  pressed("Show in Finder");
  for (const bool isTagged : {false, true}) {
    pressed("Temporary");
    EXPECT_EQ(world.disk.tags("/home/ada/Downloads").empty(), !isTagged);
    EXPECT_EQ(child<QCheckBox>(mainView(), "Temporary")->isChecked(), isTagged);
  }
  QAccessible::queryAccessibleInterface(child<Sidebar>(mainView()))
      ->child(0)
      ->actionInterface()
      ->doAction(QAccessibleActionInterface::pressAction());
  finishWork();
  EXPECT_EQ(selection(), MainSelection::overview());
  pressed("Put 1 item back");
  EXPECT_EQ(world.disk.names("/home/ada/Downloads"), "old");

  std::unique_ptr<Popover> popover;
  const auto open = [&] {
    popover = std::make_unique<Popover>(windows);
    const QRect icon(300, 0, 24, 24);
    popover->toggle(icon);
    finishWork();
    ASSERT_TRUE(popover->isVisible());
    EXPECT_EQ(popover->geometry(),
              popoverFrame(icon, child<MenuBarView>(*popover)->sizeHint() + QSize(2, 2),
                           QGuiApplication::primaryScreen()->availableGeometry()));
  };
  open();
  EXPECT_NE(told(*popover).find("row Scratch, Nothing to clear - 90 days · Bin"), std::string::npos)
      << told(*popover);
  press(*popover, "Scratch, Nothing to clear");
  EXPECT_EQ(selection(), MainSelection::folder(second));
  EXPECT_FALSE(popover->isVisible());
  open();
  press(*popover, "Turn On");
  EXPECT_FALSE(popover->isVisible());
  windows.window("main")->close();
  open();
  press(*popover, "Open Tidemar");
  EXPECT_NE(windows.window("main"), nullptr);
  open();
  press(*popover, "Quit Tidemar, Ctrl+Q");
  popover->toggle({});
  EXPECT_FALSE(popover->isVisible());
  open();
  QTest::keyClick(popover.get(), Qt::Key_Escape);
  EXPECT_FALSE(popover->isVisible());

  world.loginItem.becomes = LoginItem::Status::requiresApproval;
  world.model->setOpensAtLogin(true);
  windows.showSettings();
  EXPECT_TRUE(child<QPushButton>(*windows.window("settings"), "Open Login Items…")->isVisible());
  for (const char* control : {"Open at login", "Open Login Items…", "Show in menu bar", "Set Up…"})
    press(*windows.window("settings"), control);
  EXPECT_EQ(world.standardDefaults.boolean("showInMenuBar"), false);
  windows.window("setup")->close();
  windows.showSetup();
  EXPECT_NE(child<QPushButton>(*windows.window("setup"), "Open Login Items…"), nullptr)
      << "at once";
  for (const char* control :
       {"Open Extension Settings…", "Open Login Items…", "Allow Notifications"})
    press(*windows.window("setup"), control);
  EXPECT_NE(told(*windows.window("setup")).find("Nothing on this desktop shows notifications."),
            std::string::npos);
  EXPECT_EQ(asked, "/home/ada/Downloads extension quit login items extension login items ");
}

TEST_F(WindowCoordinatorTest, OpensOneWindowOfAKindAtTheFolderThatItIsGiven) {
  windows.showMain(FileURL("/home/ada/Downloads"));
  QWidget* main = windows.window("main");
  EXPECT_EQ(selection(), MainSelection::folder(first));
  windows.showMain(FileURL("/home/ada/Nowhere"));
  EXPECT_EQ(windows.window("main"), main);
  EXPECT_EQ(selection(), MainSelection::folder(first)) << "it goes on showing what it showed";
  windows.showSettings();
  main->close();
  EXPECT_EQ(windows.window("main"), nullptr);
  windows.showMain();
  EXPECT_TRUE(windows.window("main")->isVisible());
  EXPECT_EQ(selection(), MainSelection::folder(first));
}

TEST_F(WindowCoordinatorTest, ItTellsOnceThatItGoesOnWhenTheLastWindowCloses) {
  QObject::connect(&windows, &WindowCoordinator::lastWindowClosed, world.model.get(),
                   [this] { world.model->tellThatItGoesOn(); });
  const auto told = [this] { return world.notifications.delivered.size(); };
  windows.showMain();
  windows.showSettings();
  windows.window("main")->close();
  EXPECT_EQ(told(), 0U) << "a window is open";
  world.notifications.refuses = true;
  windows.window("settings")->close();
  world.notifications.refuses = false;
  for (int time = 0; time < 2; ++time) {
    windows.showMain();
    windows.window("main")->close();
    EXPECT_EQ(told(), 1U) << "it was not taken the first time";
  }
}

TEST_F(WindowCoordinatorTest, FoldersThatAreDroppedOnTheWindowAreAddedAndNeverMoved) {
  const TemporaryDirectory real;
  makeTree(real.url(), "Inbox/\nnote.txt 1\n");
  world.disk.draw(real.path("Inbox") + "/");
  windows.showMain();
  QWidget* content = mainView().parentWidget();
  const auto urlOf = [&](const char* name) {
    return QUrl::fromLocalFile(QString::fromStdString(real.path(name)));
  };
  QMimeData file;
  file.setUrls({urlOf("note.txt"), QUrl(QStringLiteral("https://example.org/"))});
  QMimeData folder;
  folder.setUrls({file.urls()[1], urlOf("note.txt"), urlOf("Inbox")});
  const auto isAccepted = [&](const QMimeData& data, Qt::DropActions possible) {
    QDragEnterEvent enter({}, possible, &data, {}, {});
    QApplication::sendEvent(content, &enter);
    return enter.isAccepted();
  };
  EXPECT_FALSE(isAccepted(file, Qt::LinkAction));
  EXPECT_FALSE(isAccepted(folder, Qt::MoveAction)) << "it can only be moved";
  EXPECT_TRUE(isAccepted(folder, Qt::MoveAction | Qt::CopyAction));
  QDropEvent drop({}, Qt::MoveAction | Qt::CopyAction, &folder, {}, {});
  QApplication::sendEvent(content, &drop);
  EXPECT_EQ(drop.dropAction(), Qt::CopyAction);
  finishWork();
  EXPECT_NE(world.model->reportForFolderAt(real.url("Inbox")), nullptr);
  EXPECT_EQ(world.model->reports().size(), 3U);
}

TEST_F(WindowCoordinatorTest, LeavingAFoldersPageStartsACycle) {
  windows.showMain();
  const auto overview = MainSelection::overview();
  const auto folder = MainSelection::folder(first);
  const auto other = MainSelection::folder(second);
  const struct {
    const char* name;
    std::optional<MainSelection> from;
    std::optional<MainSelection> to;
    bool startsCycle;
  } rows[] = {
      {"from the overview to a folder", overview, folder, false},
      {"from a folder to the overview", folder, overview, true},
      {"from a folder to another", folder, other, true},
      {"from a folder to itself", folder, folder, false},
      {"from a folder to nothing", folder, std::nullopt, true},
      {"from nothing to a folder", std::nullopt, folder, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    startsCycle(row.from);
    EXPECT_EQ(startsCycle(row.to), row.startsCycle);
  }
  EXPECT_FALSE(startsCycle(other, MainWindowState::Cause::link))
      << "two folders that are chosen at once come as two links";
}

TEST_F(WindowCoordinatorTest, TheSelectionFollowsWhatIsAddedAndRemoved) {
  windows.showMain(FileURL("/home/ada/Downloads"));
  auto& container = dynamic_cast<MainContainerView&>(*mainView().parentWidget());
  waitFor(container.addFolder(FileURL("/home/ada/Nowhere")));
  EXPECT_EQ(world.alerts.told.size(), 1U);
  EXPECT_EQ(selection(), MainSelection::folder(first));
  world.disk.draw("/home/ada/New/");
  mainView().onAddFolder();
  emit windows.window("main")->findChild<QFileDialog*>()->fileSelected("/home/ada/New");
  finishWork();
  EXPECT_EQ(selection(), MainSelection::folder(second + 1));

  mainView().onRemoveFolder(second + 1);
  EXPECT_EQ(selection(), MainSelection::overview());
  EXPECT_EQ(world.model->reports().size(), 3U) << "its page is left before the removal is done";
  while (world.model->reports().size() == 3)
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

TEST_F(WindowCoordinatorTest, WhatIsTypedWhenTheApplicationEndsIsKept) {
  windows.showMain(FileURL("/home/ada/Downloads"));
  finishWork();
  auto& field = *child<NumberFieldView>(mainView());
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, "12");
  windows.hideAll();
  EXPECT_TRUE(world.standardDefaults.string("windowFrame.TidemarMain"));
  waitFor(world.model->finishCommands());
  waitFor(world.model->refreshReports());
  EXPECT_EQ(world.model->reports().front().folder.settings.maxAgeDays, 12);
}

TEST_F(WindowCoordinatorTest, AWindowMayGoWhileItsPanelOrAlertIsOpen) {
  const auto close = [this](const char* identifier) {
    windows.window(identifier)->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  };
  windows.showMain();
  mainView().onAddFolder();
  mainView().onAddFolder();
  const QList<QFileDialog*> panels = windows.window("main")->findChildren<QFileDialog*>();
  ASSERT_EQ(panels.size(), 1);
  windows.hideAll();
  EXPECT_FALSE(panels.front()->isVisible() || windows.window("main")->isVisible())
      << "nothing of an application that ends stays";
  windows.showMain();
  mainView().onAddFolder();
  close("main");

  windows.showSettings();
  world.loginItem.fails = true;
  world.alerts.whileShown = [&] { close("settings"); };
  const auto toggle =
      child<SettingsContainerView>(*windows.window("settings"))->onToggleOpenAtLogin;
  toggle(true);
  EXPECT_EQ(world.alerts.told.size(), 1U);
  EXPECT_EQ(windows.window("settings"), nullptr);
}

TEST_F(WindowCoordinatorTest, UpdatesCanBeCheckedForOnceTheServiceSaysSo) {
  windows.showMain();
  const QList<QAction*> actions = windows.window("main")->findChild<QMenu*>()->actions();
  EXPECT_EQ(shown(actions), "Check for Updates…|Settings…|-|Quit Tidemar|");
  QAction* action = actions.at(0);
  action->trigger();
  EXPECT_EQ(service.checks, 0);
  service.canCheck = true;
  emit service.canCheckForUpdatesChanged();
  action->trigger();
  EXPECT_EQ(service.checks, 1);
}

TEST_F(WindowCoordinatorTest, TheMainWindowComesBackWhereItWas) {
  windows.showMain();
  windows.window("main")->setGeometry(60, 70, 700, 500);
  windows.window("main")->close();
  windows.showMain();
  EXPECT_EQ(windows.window("main")->size(), QSize(700, 500));
  windows.window("main")->close();
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  const QSize largest = screen.size() - QSize(8, 40);  // With its decoration it fits just so.
  const QSize usual = QSize(820, 560).boundedTo(largest);
  const struct {
    const char* stored;
    QSize size;
  } rows[] = {{"", usual},
              {"0 0 -5 -5", usual},
              {"-300 -300 700 500", QSize(700, 500)},
              {"700 500", QSize(700, 500)},
              {"0 0 9000 9000", largest}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.stored);
    world.standardDefaults.setString("windowFrame.TidemarMain", row.stored);
    windows.showMain();
    const QWidget* main = windows.window("main");
    EXPECT_TRUE(screen.contains(main->geometry()));
    EXPECT_EQ(main->size(), row.size);
    windows.window("main")->close();
  }
}

TEST(PopoverFrame, StandsAtTheIconWithinTheScreen) {
  const QRect screen(0, 0, 1000, 800);
  const struct {
    const char* name;
    QRect icon;
    QSize size;
    QRect frame;
  } rows[] = {
      {"under a panel at the top", {500, 0, 24, 24}, {300, 400}, {361, 28, 300, 400}},
      {"over a panel at the bottom", {500, 776, 24, 24}, {300, 400}, {361, 372, 300, 400}},
      {"not beyond the right edge", {970, 776, 24, 24}, {300, 400}, {692, 372, 300, 400}},
      {"not beyond the left edge", {0, 0, 24, 24}, {300, 400}, {8, 28, 300, 400}},
      {"no higher than the screen", {500, 0, 24, 24}, {300, 4000}, {361, 8, 300, 784}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const QRect frame = popoverFrame(row.icon, row.size, screen);
    EXPECT_EQ(frame.size(), row.frame.size());
    EXPECT_LE(std::abs(frame.x() - row.frame.x()), 1);
    EXPECT_LE(std::abs(frame.y() - row.frame.y()), 1);
  }
}

TEST_F(WindowCoordinatorTest, TheTrayMenuSaysWhatGoesWhereItStandsInForThePopover) {
  world.disk.draw("/home/ada/Downloads/old" + ModelWorld::aged(91));
  world.runCycle();
  TrayMenu menu(windows);
  EXPECT_EQ(shown(menu.actions()), "Open Tidemar|Quit Tidemar|");
  menu.standInForPopover();
  EXPECT_EQ(
      shown(menu.actions()),
      "Nothing goes today|Put 1 item back · Downloads · 8:00 AM|-|Open Tidemar|Quit Tidemar|");
  menu.actions()[1]->trigger();
  finishWork();
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(shown(menu.actions()), "1 item goes now|-|Open Tidemar|Quit Tidemar|");
  EXPECT_TRUE(world.disk.exists("/home/ada/Downloads/old"));
}

TEST_F(WindowCoordinatorTest, AnEditOnTopOfOneThatIsBeingWrittenLosesNeither) {
  windows.showMain(FileURL("/home/ada/Downloads"));
  // The screen still shows the stored settings when the second edit is made.
  TemporarySettings aged;
  aged.maxAgeDays = 30;
  TemporarySettings restarting;
  restarting.emptyOnRestart = true;
  mainView().onChangeSettings(first, {}, aged);
  mainView().onChangeSettings(first, {}, restarting);
  TemporarySettings both = aged;
  both.emptyOnRestart = true;
  const auto stored = [this] { return world.model->reports().front().folder.settings; };
  for (int turn = 0; turn < 100 && stored() != both; ++turn)
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_EQ(stored(), both);
}

}  // namespace
}  // namespace tidemar::testing
