#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QTextDocument>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/SettingsView.h"
#include "TidemarUI/Views/SetupView.h"
#include "TidemarUI/Views/Switch.h"
#include "ViewSamples.h"

namespace tidemar::testing {
namespace {

/// Every visible control that can have the focus, as "role name".
std::multiset<std::string> spokenControls(const QWidget& view) {
  static const std::map<QAccessible::Role, const char*> roles = {
      {QAccessible::PushButton, "button"}, {QAccessible::ButtonMenu, "button"},
      {QAccessible::CheckBox, "box"},      {QAccessible::SpinBox, "number"},
      {QAccessible::ComboBox, "picker"},   {QAccessible::List, "list"}};
  std::multiset<std::string> spoken;
  for (QWidget* widget : view.findChildren<QWidget*>()) {
    const bool takesFocus = widget->focusPolicy() & Qt::TabFocus;
    if (!widget->isVisible() || !takesFocus || widget->focusProxy() != nullptr) continue;
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(widget);
    const auto role = roles.find(interface->role());
    const char* name = role == roles.end() ? "other" : role->second;
    spoken.insert((interface->state().checked ? "checked " : "") + std::string(name) + " " +
                  spokenName(*widget));
  }
  return spoken;
}

TEST(Accessibility, EveryControlHasARoleANameAndAState) {
  MainView main(viewFormats(), "Bin");
  main.setState(shared(sampleState({sampleFolder(1)})));
  main.setSelection(MainSelection::folder(1));
  present(main, {820, 900});
  EXPECT_EQ(
      spokenControls(main),
      (std::multiset<std::string>{
          "list Folders", "button Add a folder", "button Remove from Tidemar", "button Menu",
          "button Show in Finder", "checked box Temporary", "button Now, 2 items · 1 MB, a, b",
          "checked box Not added or changed for", "number Not added or changed for",
          "box The folder is over", "number The folder is over", "box The disk is nearly full",
          "box The Mac restarts", "picker Move to Bin"}));
}

TEST(Accessibility, ASwitchOfTheSettingsAsksForTheOtherValue) {
  SettingsView settings;
  std::vector<bool> asked;
  settings.onToggleOpenAtLogin = [&](bool isOn) { asked.push_back(isOn); };
  settings.onToggleShowInMenuBar = settings.onToggleOpenAtLogin;
  settings.setState(
      {.openAtLogin = false, .openAtLoginRequiresApproval = true, .showInMenuBar = true});
  present(settings, {420, 300});
  EXPECT_EQ(spokenControls(settings),
            (std::multiset<std::string>{"box Open at login", "button Open Login Items…",
                                        "checked box Show in menu bar", "button Set Up…"}));
  QTest::keyClick(child<QCheckBox>(settings, "Open at login"), Qt::Key_Space);
  QTest::keyClick(child<QCheckBox>(settings, "Show in menu bar"), Qt::Key_Return);
  EXPECT_EQ(asked, (std::vector<bool>{true, false}));
  EXPECT_FALSE(child<QCheckBox>(settings, "Open at login")->isChecked());
}

TEST(Accessibility, NoTextKeepsAnotherSystemsNames) {
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

TEST(Accessibility, WhatARowTellsBesideItsTextIsNeverMarkup) {
  const QString name = QStringLiteral("<b>x</b> & y");
  MenuBarState state = sampleState({sampleFolder(1)}).overview;
  state.folders[0].place = name.toStdString();
  state.forecast[0].left = name.toStdString();
  MenuBarView popover;
  popover.setState(shared(state));
  for (const char* row : {"folder 1, Nothing to clear", "Now, 2 items · 1 MB, a, b"}) {
    auto* widget = child<QAbstractButton>(popover, row);
    ASSERT_NE(widget, nullptr);
    QTextDocument drawn;
    const QString tooltip = widget->toolTip();
    Qt::mightBeRichText(tooltip) ? drawn.setHtml(tooltip) : drawn.setPlainText(tooltip);
    EXPECT_TRUE(drawn.toPlainText().contains(name)) << tooltip.toStdString();
    EXPECT_TRUE(widget->accessibleDescription().contains(name));
  }
}

TEST(Accessibility, AWindowIsOneAndAPictureThatSaysNothingIsNone) {
  installAccessibleRoles();
  QWidget window;
  auto* picture = new QLabel(&window);
  markAsDecoration(*picture);
  auto* part = new QWidget(&window);
  present(window, {100, 100});
  const auto role = [](QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->role();
  };
  EXPECT_EQ(role(&window), QAccessible::Window);
  EXPECT_NE(role(part), QAccessible::Window);
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(picture)->state().invisible);
}

TEST(Accessibility, WhatTakesTheFocusComesIntoSightAndSaysWhyItIsOff) {
  MainView main(viewFormats(), "Bin");
  MainFolder folder = sampleFolder(1);
  main.setState(shared(sampleState({folder})));
  main.setSelection(MainSelection::folder(1));
  present(main, {640, 420});
  child<Switch>(main, "Temporary")->setFocus();
  auto* picker = child<QComboBox>(main);
  picker->setFocus();
  QApplication::processEvents();
  EXPECT_EQ(picker->visibleRegion().boundingRect(), picker->rect());
  auto* automatic = child<QCheckBox>(main, std::string(labels::automaticRule));
  EXPECT_FALSE(automatic->accessibleDescription().isEmpty());
  folder.isTemporary = false;
  folder.isProtectedRoot = true;
  main.setState(shared(sampleState({folder})));
  EXPECT_EQ(child<Switch>(main, "Temporary")->accessibleDescription().toStdString(),
            temporaryFooter(folder));
}

TEST(Accessibility, AStepSaysWhetherItIsDone) {
  SetupView setup;
  setup.setState({.isExtensionEnabled = true,
                  .isOpenAtLogin = true,
                  .isOpenAtLoginRequiresApproval = true,
                  .isNotificationsEnabled = false});
  present(setup, {420, 400});
  std::vector<std::string> marks;
  for (QLabel* label : setup.findChildren<QLabel*>()) {
    const std::string name = spokenName(*label);
    if (name == "Completed" || name == "Not completed") marks.push_back(name);
  }
  EXPECT_EQ(marks, (std::vector<std::string>{"Completed", "Completed", "Not completed"}));
  EXPECT_EQ(spokenControls(setup),
            (std::multiset<std::string>{"button Open Login Items…", "button Allow Notifications"}));
}

}  // namespace
}  // namespace tidemar::testing
