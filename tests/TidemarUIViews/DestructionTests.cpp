#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/OverviewView.h"
#include "TidemarUI/Views/SettingsView.h"
#include "TidemarUI/Views/SetupView.h"
#include "TidemarUI/Views/Sidebar.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

/// A closure that destroys its view, and goes on with all it was called with.
struct Destroyer {
  QPointer<QWidget> view;
  std::shared_ptr<int> calls = std::make_shared<int>(0);

  template <class... Arguments>
  void operator()(const Arguments&... arguments) const {
    const std::tuple<Arguments...> before(arguments...);
    delete view;
    ++*calls;
    EXPECT_TRUE(std::tie(arguments...) == before);
  }
};

/// What a user does, by which a closure of the view is called.
template <class View>
struct Way {
  const char* name;
  std::function<void(View& view)> go;
};

template <class Widget>
auto clicks(std::string_view name) {
  return [name = std::string(name)](QWidget& view) { child<Widget>(view, name)->click(); };
}

template <class Widget>
auto keys(Qt::Key key, const std::optional<std::string>& name = std::nullopt) {
  return [=](QWidget& view) { QTest::keyClick(child<Widget>(view, name), key); };
}

void clickWithMouse(QWidget& widget, QPoint place = {}) {
  QTest::mouseClick(&widget, Qt::LeftButton, {}, place);
}

void type(QWidget& view, Qt::Key last) {
  auto* age = child<NumberFieldView>(view, std::string(labels::ageRule));
  age->setFocus();
  QTest::keyClick(age, Qt::Key_5);
  if (last != Qt::Key_5) QTest::keyClick(age, last);
}

/// Types a number, and then lets something else end the edit.
auto typesAnd(const std::function<void(MainView& view)>& end) {
  return [=](MainView& view) {
    type(view, Qt::Key_5);
    end(view);
  };
}

void choose(QWidget& view, int index) {
  auto* picker = child<QComboBox>(view);
  picker->setCurrentIndex(index);
  emit picker->activated(index);
}

void chooseAndConfirmDeleting(QWidget& view) {
  choose(view, 1);
  clicks<QPushButton>(labels::deletePermanently)(*child<QMessageBox>(view));
}

QPoint centerOfRow(const Sidebar& sidebar, int row) {
  return sidebar.visualRect(sidebar.model()->index(row, 0)).center();
}

QMenu* openContextMenu(QWidget& view) {
  auto* sidebar = child<Sidebar>(view);
  const QPoint place = centerOfRow(*sidebar, 2);
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, sidebar->mapToGlobal(place));
  QApplication::sendEvent(sidebar->viewport(), &event);
  return child<QMenu>(*sidebar);
}

/// The main window's content.
struct SampleMainView : MainView {
  SampleMainView() : MainView(viewFormats(), "Bin") {}
};

/// Has each of these closures destroy the view.
template <class... Closures>
void letEach(const Destroyer& destroyer, Closures&... closures) {
  ((closures = destroyer), ...);
}

/// Shows the page of a folder.
void prepare(MainView& view, const Destroyer& destroyer) {
  letEach(destroyer, view.onSelect, view.onAddFolder, view.onRemoveFolder, view.onSetTemporary,
          view.onChangeSettings, view.onPutBack, view.onShowInFinder);
  view.setState(shared(sampleState({sampleFolder(1), sampleFolder(2)})));
  view.setSelection(MainSelection::folder(1));
  present(view, {820, 900});
}

void prepare(MenuBarView& view, const Destroyer& destroyer) {
  letEach(destroyer, view.onTurnOnFinderExtension, view.onSelectFolder, view.onUndo,
          view.onShowInFinder, view.onOpen, view.onQuit);
  MenuBarState state = sampleState({sampleFolder(1)}).overview;
  state.isFinderExtensionOff = true;
  view.setState(shared(state));
  present(view, view.sizeHint());
}

void prepare(SettingsView& view, const Destroyer& destroyer) {
  letEach(destroyer, view.onToggleOpenAtLogin, view.onToggleShowInMenuBar,
          view.onOpenLoginItemsSettings, view.onOpenSetup);
  view.setState({.openAtLoginRequiresApproval = true});
  present(view, {420, 400});
}

void prepare(SetupView& view, const Destroyer& destroyer) {
  letEach(destroyer, view.onOpenExtensionManagement, view.onToggleOpenAtLogin,
          view.onOpenLoginItemsSettings, view.onRequestNotifications);
  present(view, {420, 500});
}

/// Goes each way with a view of its own, whose closures all destroy it; after that it is destroyed
/// in any case. So many closures are called.
template <class View>
void expectCalls(int calls, const std::vector<Way<View>>& ways) {
  for (const Way<View>& way : ways) {
    SCOPED_TRACE(way.name);
    const QPointer<View> view = new View;
    const Destroyer destroyer{view.data()};
    prepare(*view, destroyer);
    way.go(*view);
    if (calls > 0) {
      EXPECT_TRUE(QTest::qWaitFor([&] { return view.isNull(); }));
    }
    delete view;
    QApplication::processEvents();
    EXPECT_EQ(*destroyer.calls, calls);
  }
}

TEST(Destruction, AClosureOfTheMainWindowMayDestroyIt) {
  const std::vector<Way<SampleMainView>> ways = {
      {"the sidebar by mouse",
       [](QWidget& view) {
         auto* sidebar = child<Sidebar>(view);
         clickWithMouse(*sidebar->viewport(), centerOfRow(*sidebar, 0));
       }},
      {"the sidebar by keyboard", keys<Sidebar>(Qt::Key_Down)},
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
         clickWithMouse(*child<QToolButton>(view, std::string(labels::addAFolder)));
       }},
      {"minus", clicks<QToolButton>(labels::removeFromTidemar)},
      {"the switch", keys<Switch>(Qt::Key_Space)},
      {"the switch by an assistive tool", [](QWidget& view) { child<Switch>(view)->toggle(); }},
      {"the folder in the file manager", clicks<QPushButton>(labels::showInFinder({}))},
      {"items in the file manager",
       [](QWidget& view) { keys<MenuRow>(Qt::Key_Return)(*child<FolderDetailView>(view)); }},
      {"items of the overview in the file manager",
       [](MainView& view) {
         view.setSelection(MainSelection::overview());
         keys<MenuRow>(Qt::Key_Return)(*child<OverviewView>(view));
       }},
      {"putting back",
       [](MainView& view) {
         view.setSelection(MainSelection::overview());
         clicks<QPushButton>("Put 2 items back")(view);
       }},
      {"a rule",
       [](QWidget& view) {
         clickWithMouse(*child<QCheckBox>(view, labels::restartRule({})), {10, 10});
       }},
      {"a number by Return", [](QWidget& view) { type(view, Qt::Key_Return); }},
      {"a number by leaving it", [](QWidget& view) { type(view, Qt::Key_Tab); }},
      {"a number by waiting", [](QWidget& view) { type(view, Qt::Key_Up); }},
      {"a number by another page",
       typesAnd([](MainView& view) { view.setSelection(MainSelection::folder(2)); })},
      {"a number whose folder goes",
       typesAnd([](MainView& view) { view.setState(shared(sampleState({}))); })},
      {"a number whose folder is made plain", typesAnd([](MainView& view) {
         MainFolder plain = sampleFolder(1);
         plain.isTemporary = false;
         view.setState(shared(sampleState({plain})));
       })},
      {"a number by closing", typesAnd([](MainView& view) { view.close(); })},
      {"a number by hiding", typesAnd([](MainView& view) { view.hide(); })},
      {"deleting, confirmed", chooseAndConfirmDeleting},
      {"deleting, confirmed, and another page",
       [](MainView& view) {
         chooseAndConfirmDeleting(view);
         view.setSelection(MainSelection::overview());
       }},
      {"going over to the Bin",
       [](MainView& view) {
         TemporarySettings deleting;
         deleting.disposal = Disposal::delete_;
         view.setState(shared(sampleState({sampleFolder(1, deleting)})));
         choose(view, 0);
       }},
  };
  expectCalls(1, ways);
}

TEST(Destruction, AClosureOfTheOtherScreensMayDestroyThem) {
  const std::vector<Way<MenuBarView>> ofPopover = {
      {"the extension", clicks<QPushButton>(labels::turnOn)},
      {"items in the file manager", clicks<MenuRow>("Now, 2 items · 1 MB, a, b")},
      {"a folder", keys<MenuRow>(Qt::Key_Return, "folder 1, Nothing to clear")},
      {"putting back", clicks<QPushButton>("Put 2 items back")},
      {"opening",
       [](QWidget& view) {
         clickWithMouse(*child<MenuRow>(view, std::string(labels::openTidemar)));
       }},
      {"quitting", clicks<MenuRow>("Quit Tidemar, Ctrl+Q")},
  };
  expectCalls(1, ofPopover);

  const std::vector<Way<SettingsView>> ofSettings = {
      {"login", clicks<QCheckBox>(labels::openAtLogin)},
      {"approval", clicks<QPushButton>(labels::openLoginItems)},
      {"menu bar", clicks<QCheckBox>(labels::showInMenuBar)},
      {"setup", clicks<QPushButton>(labels::setUp)},
  };
  expectCalls(1, ofSettings);

  const std::vector<Way<SetupView>> ofSetup = {
      {"extension", clicks<QPushButton>("Open Extension Settings…")},
      {"notifications", clicks<QPushButton>("Allow Notifications")},
      {"login", clicks<QPushButton>("Enable at Login")},
      {"approval",
       [](SetupView& view) {
         view.setState({.isOpenAtLoginRequiresApproval = true});
         clicks<QPushButton>(labels::openLoginItems)(view);
       }},
  };
  expectCalls(1, ofSetup);
}

TEST(Destruction, AViewThatIsDestroyedInTheMidstOfAnythingCallsNoClosure) {
  QAction quit(QStringLiteral("Quit"));
  const std::vector<Way<SampleMainView>> ways = {
      {"a number is typed", [](QWidget& view) { type(view, Qt::Key_6); }},
      {"a number is stepped", [](QWidget& view) { type(view, Qt::Key_Up); }},
      {"the window was left", typesAnd([](QWidget&) { QApplication::setActiveWindow(nullptr); })},
      {"the window was hidden", typesAnd([](QWidget& view) { view.hide(); })},
      {"the menu of a row is open", [](QWidget& view) { openContextMenu(view); }},
      {"an entry of that menu was chosen",
       [](QWidget& view) { openContextMenu(view)->actions()[1]->trigger(); }},
      {"the question is open", [](QWidget& view) { choose(view, 1); }},
      {"the question was answered", chooseAndConfirmDeleting},
      {"a row was chosen", keys<Sidebar>(Qt::Key_Down)},
      {"the picker is open", [](QWidget& view) { child<QComboBox>(view)->showPopup(); }},
      {"the menu of the window is open, and goes with it",
       [&quit](MainView& view) {
         view.setMenuActions({&quit});
         QTimer::singleShot(0, &view, [&view] { delete &view; });
         clicks<QToolButton>(labels::menu)(view);
       }},
      {"the menu of a number is open, and goes with it", typesAnd([](QWidget& view) {
         auto* age = child<NumberFieldView>(view);
         QTimer::singleShot(0, &view, [&view] { delete &view; });
         QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, age->mapToGlobal(QPoint()));
         QApplication::sendEvent(age, &event);
       })},
  };
  expectCalls(0, ways);
}

}  // namespace
}  // namespace tidemar::testing
