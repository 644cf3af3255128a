#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <numeric>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/Sidebar.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

/// A closure that destroys its view, counts its calls and goes on with all it was called with.
struct Destroyer {
  QPointer<QWidget> view;
  int* calls;

  template <class... Arguments>
  void operator()(const Arguments&... arguments) const {
    const std::tuple<Arguments...> before(arguments...);
    delete view;
    ++*calls;
    EXPECT_TRUE(std::tie(arguments...) == before);
  }
};

using Calls = std::vector<int>;

/// Has each closure of a screen destroy it, and count its calls under its place in the list.
void letEachClosureDestroy(QWidget& screen, Calls& calls) {
  const auto letEach = [&](auto&... closures) {
    calls.resize(sizeof...(closures));
    std::size_t place = 0;
    ((closures = Destroyer{&screen, &calls[place++]}), ...);
  };
  if (auto* view = dynamic_cast<MainView*>(&screen))
    letEach(view->onSelect, view->onAddFolder, view->onRemoveFolder, view->onSetTemporary,
            view->onChangeSettings, view->onPutBack, view->onShowInFinder);
  if (auto* view = dynamic_cast<MenuBarView*>(&screen))
    letEach(view->onTurnOnFinderExtension, view->onSelectFolder, view->onUndo, view->onShowInFinder,
            view->onOpen, view->onQuit);
  if (auto* view = dynamic_cast<SettingsView*>(&screen))
    letEach(view->onToggleOpenAtLogin, view->onToggleShowInMenuBar, view->onOpenLoginItemsSettings,
            view->onOpenSetup);
  if (auto* view = dynamic_cast<SetupView*>(&screen))
    letEach(view->onOpenExtensionManagement, view->onToggleOpenAtLogin,
            view->onOpenLoginItemsSettings, view->onRequestNotifications);
}

void pressAsAnAssistiveToolDoes(QWidget* control) {
  QAccessibleActionInterface* actions =
      QAccessible::queryAccessibleInterface(control)->actionInterface();
  if (actions == nullptr) return;
  for (const QString& action : actions->actionNames()) {
    if (action != QAccessibleActionInterface::setFocusAction()) return actions->doAction(action);
  }
}

template <Qt::Key key>
void pressKey(QWidget* control) {
  control->setFocus();
  QTest::keyClick(control, key);
}

TEST(Destruction, EveryClosureThatAControlCallsMayDestroyItsScreen) {
  const std::function<void(QWidget*)> gestures[] = {
      pressKey<Qt::Key_Space>, pressKey<Qt::Key_Return>, pressKey<Qt::Key_Down>,
      pressAsAnAssistiveToolDoes, [](QWidget* control) {
        QTest::mouseClick(control, Qt::LeftButton, {}, {10, 10});
      }};
  std::map<std::string, Calls> callsOf;
  for (const ScreenRow& row : screens()) {
    for (const auto& gesture : gestures) {
      for (std::size_t place = 0, count = 1; place < count; ++place) {
        const QPointer<QWidget> screen = row.make().release();
        Calls& calls = callsOf[typeid(*screen).name()];
        letEachClosureDestroy(*screen, calls);
        const std::vector<QWidget*> controls = controlsOf(*screen);
        count = controls.size();
        // A menu that was opened goes with its screen.
        QTimer::singleShot(0, screen, [screen] {
          if (QApplication::activePopupWidget() != nullptr) delete screen;
        });
        gesture(controls.at(place));
        QApplication::processEvents();
        delete screen;
        QApplication::processEvents();
      }
    }
  }
  EXPECT_EQ(callsOf.size(), 4U);
  for (const auto& [screen, calls] : callsOf)
    EXPECT_EQ(std::ranges::count(calls, 0), 0) << ::testing::PrintToString(calls) << screen;
}

template <class Widget>
auto clicks(std::string_view name) {
  return [name = std::string(name)](QWidget& view) { child<Widget>(view, name)->click(); };
}

auto types(Qt::Key last) {
  return [last](QWidget& view) {
    auto* age = child<NumberFieldView>(view, std::string(labels::ageRule));
    age->setFocus();
    QTest::keyClick(age, Qt::Key_5);
    if (last != Qt::Key_5) QTest::keyClick(age, last);
  };
}

/// Types a number, and then lets something else end the edit.
auto typesAnd(const std::function<void(MainView& view)>& end) {
  return [=](MainView& view) {
    types(Qt::Key_5)(view);
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

QMenu* openContextMenu(QWidget& view) {
  auto* sidebar = child<Sidebar>(view);
  const QPoint place = sidebar->visualRect(sidebar->model()->index(2, 0)).center();
  QContextMenuEvent event(QContextMenuEvent::Mouse, place, sidebar->mapToGlobal(place));
  QApplication::sendEvent(sidebar->viewport(), &event);
  return child<QMenu>(*sidebar);
}

/// What the user does on a page, whose every closure destroys it.
using Ways = std::vector<std::pair<const char*, std::function<void(MainView& view)>>>;

/// Goes each way on a page of its own, which is destroyed after that in any case. So many closures
/// are called.
void expectCalls(int calls, const Ways& ways) {
  for (const auto& [name, go] : ways) {
    SCOPED_TRACE(name);
    Calls called;
    const QPointer view = dynamic_cast<MainView*>(screens().front().make().release());
    letEachClosureDestroy(*view, called);
    go(*view);
    if (calls > 0) {
      EXPECT_TRUE(QTest::qWaitFor([&] { return view.isNull(); }));
    }
    delete view;
    QApplication::processEvents();
    EXPECT_EQ(std::accumulate(called.begin(), called.end(), 0), calls);
  }
}

TEST(Destruction, APageMayGoByWhatEndsAnEdit) {
  const auto showPlain = [](MainView& view) {
    MainFolder plain = sampleFolder(1);
    plain.isTemporary = false;
    view.setState(shared(sampleState({plain})));
  };
  expectCalls(1, {{"a row's menu, to show",
                   [](auto& view) { openContextMenu(view)->actions()[0]->trigger(); }},
                  {"a row's menu, to remove",
                   [](auto& view) {
                     QMenu* menu = openContextMenu(view);
                     menu->setActiveAction(menu->actions()[1]);
                     QTest::keyClick(menu, Qt::Key_Return);
                   }},
                  {"a number by Return", types(Qt::Key_Return)},
                  {"a number by leaving it", types(Qt::Key_Tab)},
                  {"a number by another page",
                   typesAnd([](auto& view) { view.setSelection(MainSelection::folder(2)); })},
                  {"a number whose folder goes",
                   typesAnd([](auto& view) { view.setState(shared(sampleState({}))); })},
                  {"a number whose folder is made plain", typesAnd(showPlain)},
                  {"a number by closing", typesAnd([](auto& view) { view.close(); })},
                  {"a number by hiding", typesAnd([](auto& view) { view.hide(); })},
                  {"a number by waiting", types(Qt::Key_Up)},
                  {"deleting, confirmed", chooseAndConfirmDeleting},
                  {"deleting, confirmed, and another page",
                   [](auto& view) {
                     chooseAndConfirmDeleting(view);
                     view.setSelection(MainSelection::overview());
                   }},
                  {"going over to the Bin", [](auto& view) {
                     TemporarySettings deleting;
                     deleting.disposal = Disposal::delete_;
                     view.setState(shared(sampleState({sampleFolder(1, deleting)})));
                     choose(view, 0);
                   }}});
}

TEST(Destruction, APageThatGoesInTheMidstOfAnythingCallsNoClosure) {
  const auto openMenuAndGo = [](MainView& view) {
    auto* age = child<NumberFieldView>(view);
    QTimer::singleShot(0, &view, [&view] { delete &view; });
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, age->mapToGlobal(QPoint()));
    QApplication::sendEvent(age, &event);
  };
  QAction quit(QStringLiteral("Quit"));
  const auto openWindowMenuAndGo = [&quit](MainView& view) {
    view.setMenuActions({&quit});
    QTimer::singleShot(0, &view, [&view] { delete &view; });
    clicks<QToolButton>(labels::menu)(view);
  };
  expectCalls(
      0, {{"a row's menu is open", [](auto& view) { openContextMenu(view); }},
          {"a number is typed", types(Qt::Key_6)},
          {"a number is stepped", types(Qt::Key_Up)},
          {"the window was left", typesAnd([](auto&) { QApplication::setActiveWindow(nullptr); })},
          {"the menu of a number is open, and goes with it", typesAnd(openMenuAndGo)},
          {"the window was hidden", typesAnd([](auto& view) { view.hide(); })},
          {"an entry of a row's menu was chosen",
           [](auto& view) { openContextMenu(view)->actions()[1]->trigger(); }},
          {"a row was chosen",
           [](auto& view) { QTest::keyClick(child<Sidebar>(view), Qt::Key_Down); }},
          {"the picker is open", [](auto& view) { child<QComboBox>(view)->showPopup(); }},
          {"the menu of the window is open, and goes with it", openWindowMenuAndGo},
          {"the question was answered", chooseAndConfirmDeleting},
          {"the question is open", [](auto& view) { choose(view, 1); }}});
}

}  // namespace
}  // namespace tidemar::testing
