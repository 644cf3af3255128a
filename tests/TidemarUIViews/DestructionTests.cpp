#include <QAccessible>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/SettingsView.h"
#include "TidemarUI/Views/SetupView.h"
#include "TidemarUI/Views/Sidebar.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

std::string spoken(const FolderSummary& summary) {
  return summary.name;
}
std::string spoken(const RecentRun& run) {
  return run.summary;
}
std::string spoken(const std::vector<FileURL>& items) {
  return items.front().path();
}
std::string spoken(const TemporarySettings& settings) {
  return std::to_string(settings.maxAgeDays.value_or(0));
}
std::string spoken(const std::optional<MainSelection>& selection) {
  return std::to_string(selection->folderID.value_or(0));
}
std::string spoken(std::int64_t number) {
  return std::to_string(number);
}

/// A closure that destroys its view, and goes on with all it was called with.
struct Destroyer {
  QPointer<QWidget> view;
  std::shared_ptr<int> calls = std::make_shared<int>(0);

  template <class... Arguments>
  void operator()(const Arguments&... arguments) const {
    delete view;
    ++*calls;
    EXPECT_TRUE((!spoken(arguments).empty() && ... && true));
  }
};

struct Way {
  const char* name;
  std::function<void(QWidget& view)> go;
};

QPushButton* button(const QWidget& view, std::string_view text) {
  for (QPushButton* candidate : childrenOf<QPushButton>(view)) {
    if (candidate->text().toStdString() == text) return candidate;
  }
  return nullptr;
}

void type(QWidget& view, Qt::Key last) {
  auto* age = child<NumberFieldView>(view, std::string(labels::ageRule));
  age->setFocus();
  QTest::keyClick(age, Qt::Key_5);
  if (last != Qt::Key_5) QTest::keyClick(age, last);
}

void choose(QWidget& view, int index) {
  auto* picker = child<QComboBox>(view);
  picker->setCurrentIndex(index);
  emit picker->activated(index);
}

QMenu* openContextMenu(QWidget& view) {
  auto* sidebar = child<Sidebar>(view);
  const QPoint place = sidebar->visualRect(sidebar->model()->index(2, 0)).center();
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, sidebar->mapToGlobal(place));
  QApplication::sendEvent(sidebar->viewport(), &event);
  return child<QMenu>(*sidebar);
}

/// Goes each way with a view of its own, whose closures all destroy it.
void expectDestroyed(const std::vector<Way>& ways,
                     const std::function<QWidget*(Destroyer& destroyer)>& make) {
  for (const Way& way : ways) {
    SCOPED_TRACE(way.name);
    Destroyer destroyer;
    const QPointer<QWidget> view = make(destroyer);
    way.go(*view);
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.isNull(); }));
    EXPECT_EQ(*destroyer.calls, 1);
    delete view;
  }
}

MainView* makeMainView(Destroyer& destroyer, Disposal disposal = Disposal::bin) {
  auto* view = new MainView(viewFormats(), "Bin");
  destroyer.view = view;
  view->onSelect = destroyer;
  view->onAddFolder = destroyer;
  view->onRemoveFolder = destroyer;
  view->onSetTemporary = [destroyer](std::int64_t id, bool) { destroyer(id); };
  view->onChangeSettings = destroyer;
  view->onPutBack = destroyer;
  view->onShowInFinder = destroyer;
  TemporarySettings settings;
  settings.disposal = disposal;
  view->setState(shared(sampleState({sampleFolder(1, settings), sampleFolder(2)})));
  view->setSelection(MainSelection::folder(1));
  present(*view, {820, 900});
  return view;
}

TEST(Destruction, AClosureOfTheMainWindowMayDestroyIt) {
  const auto main = [](QWidget& view) -> MainView& { return dynamic_cast<MainView&>(view); };
  expectDestroyed(
      {
          {"the sidebar by mouse",
           [](QWidget& view) {
             auto* sidebar = child<Sidebar>(view);
             QTest::mouseClick(sidebar->viewport(), Qt::LeftButton, {},
                               sidebar->visualRect(sidebar->model()->index(0, 0)).center());
           }},
          {"the sidebar by keyboard",
           [](QWidget& view) { QTest::keyClick(child<Sidebar>(view), Qt::Key_Down); }},
          {"a row's menu, to show",
           [](QWidget& view) { openContextMenu(view)->actions()[0]->trigger(); }},
          {"a row's menu, to remove",
           [](QWidget& view) {
             QMenu* menu = openContextMenu(view);
             menu->setActiveAction(menu->actions()[1]);
             QTest::keyClick(menu, Qt::Key_Return);
           }},
          {"plus",
           [](QWidget& view) {
             QTest::mouseClick(child<QToolButton>(view, std::string(labels::addAFolder)),
                               Qt::LeftButton);
           }},
          {"minus",
           [](QWidget& view) {
             child<QToolButton>(view, std::string(labels::removeFromTidemar))->click();
           }},
          {"the switch",
           [](QWidget& view) { QTest::keyClick(child<Switch>(view), Qt::Key_Space); }},
          {"the switch by an assistive tool", [](QWidget& view) { child<Switch>(view)->toggle(); }},
          {"the folder in the file manager",
           [](QWidget& view) { button(view, labels::showInFinder({}))->click(); }},
          {"items in the file manager",
           [](QWidget& view) {
             QTest::keyClick(child<MenuRow>(*child<FolderDetailView>(view)), Qt::Key_Return);
           }},
          {"putting back",
           [main](QWidget& view) {
             main(view).setSelection(MainSelection::overview());
             button(view, labels::putBack)->click();
           }},
          {"a rule",
           [](QWidget& view) {
             QTest::mouseClick(child<QCheckBox>(view, labels::restartRule({})), Qt::LeftButton, {},
                               {10, 10});
           }},
          {"a number by Return", [](QWidget& view) { type(view, Qt::Key_Return); }},
          {"a number by leaving it", [](QWidget& view) { type(view, Qt::Key_Tab); }},
          {"a number by waiting", [](QWidget& view) { type(view, Qt::Key_Up); }},
          {"a number by another page",
           [main](QWidget& view) {
             type(view, Qt::Key_5);
             main(view).setSelection(MainSelection::folder(2));
           }},
          {"a number whose folder goes",
           [main](QWidget& view) {
             type(view, Qt::Key_5);
             main(view).setState(shared(sampleState({})));
           }},
          {"a number whose folder is made plain",
           [main](QWidget& view) {
             type(view, Qt::Key_5);
             MainFolder plain = sampleFolder(1);
             plain.isTemporary = false;
             main(view).setState(shared(sampleState({plain})));
           }},
          {"a number by closing",
           [](QWidget& view) {
             type(view, Qt::Key_5);
             view.close();
           }},
          {"a number by hiding",
           [](QWidget& view) {
             type(view, Qt::Key_5);
             view.hide();
           }},
          {"deleting, confirmed",
           [](QWidget& view) {
             choose(view, 1);
             button(*child<QMessageBox>(view), labels::deletePermanently)->click();
           }},
          {"deleting, confirmed, and another page",
           [main](QWidget& view) {
             choose(view, 1);
             button(*child<QMessageBox>(view), labels::deletePermanently)->click();
             main(view).setSelection(MainSelection::overview());
           }},
      },
      [](Destroyer& destroyer) { return makeMainView(destroyer); });
  expectDestroyed({{"going over to the Bin", [](QWidget& view) { choose(view, 0); }}},
                  [](Destroyer& destroyer) { return makeMainView(destroyer, Disposal::delete_); });
}

TEST(Destruction, AClosureOfTheOtherScreensMayDestroyThem) {
  expectDestroyed(
      {
          {"the extension", [](QWidget& view) { button(view, labels::turnOn)->click(); }},
          {"items in the file manager",
           [](QWidget& view) { child<MenuRow>(view, "Now, 2 items · 1 MB, a, b")->click(); }},
          {"a folder",
           [](QWidget& view) {
             QTest::keyClick(child<MenuRow>(view, "folder 1, Nothing to clear"), Qt::Key_Return);
           }},
          {"putting back", [](QWidget& view) { button(view, labels::putBack)->click(); }},
          {"opening",
           [](QWidget& view) {
             QTest::mouseClick(child<MenuRow>(view, std::string(labels::openTidemar)),
                               Qt::LeftButton);
           }},
          {"quitting",
           [](QWidget& view) { child<MenuRow>(view, "Quit Tidemar, Ctrl+Q")->click(); }},
      },
      [](Destroyer& destroyer) {
        auto* view = new MenuBarView;
        destroyer.view = view;
        view->onTurnOnFinderExtension = destroyer;
        view->onSelectFolder = destroyer;
        view->onUndo = destroyer;
        view->onShowInFinder = destroyer;
        view->onOpen = destroyer;
        view->onQuit = destroyer;
        MenuBarState state = sampleState({sampleFolder(1)}).overview;
        state.isFinderExtensionOff = true;
        view->setState(shared(state));
        present(*view, view->sizeHint());
        return view;
      });
  expectDestroyed(
      {
          {"login",
           [](QWidget& view) {
             child<QCheckBox>(view, std::string(labels::openAtLogin))->click();
           }},
          {"approval", [](QWidget& view) { button(view, labels::openLoginItems)->click(); }},
          {"menu bar",
           [](QWidget& view) {
             child<QCheckBox>(view, std::string(labels::showInMenuBar))->click();
           }},
          {"setup", [](QWidget& view) { button(view, labels::setUp)->click(); }},
      },
      [](Destroyer& destroyer) {
        auto* view = new SettingsView;
        destroyer.view = view;
        view->onToggleOpenAtLogin = [destroyer](bool) { destroyer(); };
        view->onToggleShowInMenuBar = view->onToggleOpenAtLogin;
        view->onOpenLoginItemsSettings = destroyer;
        view->onOpenSetup = destroyer;
        view->setState({.openAtLoginRequiresApproval = true});
        present(*view, {420, 400});
        return view;
      });
  for (const bool needsApproval : {false, true}) {
    std::vector<Way> ways;
    for (const char* offer : {"Open Extension Settings…", "Allow Notifications",
                              needsApproval ? "Open Login Items…" : "Enable at Login"})
      ways.push_back({offer, [offer](QWidget& view) { button(view, offer)->click(); }});
    expectDestroyed(ways, [needsApproval](Destroyer& destroyer) {
      auto* view = new SetupView;
      destroyer.view = view;
      view->onOpenExtensionManagement = destroyer;
      view->onToggleOpenAtLogin = [destroyer](bool) { destroyer(); };
      view->onOpenLoginItemsSettings = destroyer;
      view->onRequestNotifications = destroyer;
      view->setState({.isOpenAtLoginRequiresApproval = needsApproval});
      present(*view, {420, 500});
      return view;
    });
  }
}

TEST(Destruction, AViewThatIsDestroyedInTheMidstOfAnythingCallsNoClosure) {
  QAction quit(QStringLiteral("Quit"));
  const std::vector<Way> ways = {
      {"a number is typed", [](QWidget& view) { type(view, Qt::Key_6); }},
      {"a number is stepped", [](QWidget& view) { type(view, Qt::Key_Up); }},
      {"the window was left",
       [](QWidget& view) {
         type(view, Qt::Key_6);
         QApplication::setActiveWindow(nullptr);
       }},
      {"the window was hidden",
       [](QWidget& view) {
         type(view, Qt::Key_6);
         view.hide();
       }},
      {"the menu of a row is open", [](QWidget& view) { openContextMenu(view); }},
      {"an entry of that menu was chosen",
       [](QWidget& view) { openContextMenu(view)->actions()[1]->trigger(); }},
      {"the question is open", [](QWidget& view) { choose(view, 1); }},
      {"the question was answered",
       [](QWidget& view) {
         choose(view, 1);
         button(*child<QMessageBox>(view), labels::deletePermanently)->click();
       }},
      {"a row was chosen",
       [](QWidget& view) { QTest::keyClick(child<Sidebar>(view), Qt::Key_Down); }},
      {"the picker is open", [](QWidget& view) { child<QComboBox>(view)->showPopup(); }},
      {"the menu of the window is open, and goes with it",
       [&quit](QWidget& view) {
         dynamic_cast<MainView&>(view).setMenuActions({&quit});
         QTimer::singleShot(0, &view, [&view] { delete &view; });
         child<QToolButton>(view, std::string(labels::menu))->click();
       }},
      {"the menu of a number is open, and goes with it",
       [](QWidget& view) {
         auto* age = child<NumberFieldView>(view);
         type(view, Qt::Key_6);
         QTimer::singleShot(0, &view, [&view] { delete &view; });
         QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, age->mapToGlobal(QPoint()));
         QApplication::sendEvent(age, &event);
       }},
  };
  for (const Way& way : ways) {
    SCOPED_TRACE(way.name);
    Destroyer destroyer;
    const QPointer<QWidget> view = makeMainView(destroyer);
    way.go(*view);
    delete view;
    QApplication::processEvents();
    EXPECT_EQ(*destroyer.calls, 0);
  }
}

}  // namespace
}  // namespace tidemar::testing
