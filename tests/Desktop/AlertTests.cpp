#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextEdit>
#include <QTimer>

#include "Platform/Desktop/AlertDialog.h"
#include "Platform/Desktop/ModalAlerts.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

/// Runs an alert and, once it is up, what a user does then.
void runAlert(const Alerts::Alert& alert, const std::function<void(AlertDialog&)>& whenItIsUp) {
  bool wasUp = false;
  QTimer::singleShot(0, qApp, [&] {
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    wasUp = true;
    whenItIsUp(static_cast<AlertDialog&>(*dialog));
  });
  ModalAlerts().run(alert);
  EXPECT_TRUE(wasUp);
}

void press(QWidget& widget, Qt::Key key) {
  QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
  QApplication::sendEvent(&widget, &event);
}

TEST(Alert, EnterAndEscapePressItsButton) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    runAlert({.message = "Couldn't add a", .information = "It is gone."}, [&](AlertDialog& dialog) {
      EXPECT_EQ(dialog.focusWidget(), dialog.findChild<QPushButton*>());
      press(*dialog.focusWidget(), key);
    });
    // From the text, too, where a user has just scrolled.
    runAlert({.message = "Couldn't add a", .information = "It is gone."},
             [&](AlertDialog& dialog) { press(*dialog.findChild<QTextEdit*>(), key); });
  }
}

TEST(Alert, ShowsNamesAsTheyAreAndFitsTheScreen) {
  std::string lines;
  for (int i = 0; i < 2000; ++i)
    lines += "Something new is already called <b>" + std::to_string(i) + "</b> & co.\n";
  const std::string name(255, 'W');
  const Alerts::Alert rows[] = {
      {.message = "Couldn't add <i>x</i>", .information = "<b>a</b> &amp; b"},
      {.message = "Couldn't add 日本語 é", .information = ""},
      {.message = "Couldn't add " + name, .information = name},
      {.message = "Some items couldn't be put back", .information = lines},
  };
  for (const Alerts::Alert& alert : rows) {
    SCOPED_TRACE(alert.message);
    runAlert(alert, [&](AlertDialog& dialog) {
      const QTextEdit& edit = *dialog.findChild<QTextEdit*>();
      std::string expected = alert.message;
      if (!alert.information.empty()) expected += "\n" + alert.information;
      EXPECT_EQ(edit.toPlainText().toStdString(), expected);
      const QSize screen = dialog.screen()->availableSize();
      EXPECT_LT(dialog.width(), screen.width());
      EXPECT_LT(dialog.height(), screen.height());
      const int scrollBar = edit.style()->pixelMetric(QStyle::PM_ScrollBarExtent);
      EXPECT_LE(edit.minimumWidth(), 60 * edit.fontMetrics().averageCharWidth() + scrollBar);
      EXPECT_LT(edit.height() - edit.document()->size().height(), 2 * edit.fontMetrics().height())
          << "no room is left empty";
      const QPushButton* button = dialog.findChild<QPushButton*>();
      EXPECT_TRUE(dialog.rect().contains(button->geometry()));
      dialog.reject();
    });
  }
}

TEST(Alert, StandsOverAWindowOfOursAndSurvivesItsEnd) {
  QWidget popover(nullptr, Qt::Popup);
  popover.show();
  runAlert({.message = "a", .information = ""}, [](AlertDialog& dialog) {
    EXPECT_EQ(dialog.parentWidget(), nullptr) << "a popup closes any moment";
    EXPECT_TRUE(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    dialog.reject();
  });
  popover.close();
  auto window = std::make_unique<QWidget>();
  window->show();
  runAlert({.message = "a", .information = ""}, [&](AlertDialog& dialog) {
    EXPECT_EQ(dialog.parentWidget(), window.get());
    EXPECT_FALSE(dialog.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    window.reset();
  });
}

}  // namespace
}  // namespace tidemar::testing
