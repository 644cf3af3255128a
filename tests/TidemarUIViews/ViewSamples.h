#pragma once

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QWidget>

#include "Platform/Locale/Formats.h"
#include "TidemarUI/State/MainState.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/SettingsView.h"
#include "TidemarUI/Views/SetupView.h"
#include "support/Testing.h"

namespace tidemar::testing {

inline Formats viewFormats() {
  return Formats("en_US", "UTC");
}

inline ForecastGroup sampleGroup(const std::string& when,
                                 const std::string& action = "Move to Bin") {
  return {.when = when,
          .action = action,
          .isPermanent = action != "Move to Bin",
          .isAtRestart = false,
          .items = {FileURL("/home/ada/a"), FileURL("/home/ada/b")},
          .totalSize = "1 MB"};
}

/// A folder that is Temporary and can be read.
inline MainFolder sampleFolder(std::int64_t id = 1, TemporarySettings settings = {}) {
  return {.id = id,
          .name = "folder " + std::to_string(id),
          .path = "/home/ada/folder " + std::to_string(id),
          .isTemporary = true,
          .isProtectedRoot = false,
          .isReadable = true,
          .distanceToGoing = "Nothing to clear",
          .settings = settings,
          .preview = {.headline = "2 items go now", .forecast = {sampleGroup("Now")}}};
}

inline MainState sampleState(std::vector<MainFolder> folders) {
  MainState state;
  state.overview.headline = "2 items go now";
  state.overview.subheadline = "some folders";
  for (const MainFolder& folder : folders)
    state.overview.folders.push_back({.id = folder.id,
                                      .path = folder.path,
                                      .name = folder.name,
                                      .rules = "90 days · Bin",
                                      .distanceToGoing = folder.distanceToGoing});
  state.overview.forecast = {sampleGroup("Now")};
  state.overview.recentRuns = {{.id = 7,
                                .summary = "2 items to the Bin",
                                .detail = "folder 1 · 9:12",
                                .journalEntryIDs = {7, 8},
                                .canPutBack = true,
                                .putBackLabel = "Put 2 items back"}};
  state.folders = std::move(folders);
  return state;
}

/// A value as the views take it.
template <class Value>
std::shared_ptr<const Value> shared(Value value) {
  return std::make_shared<const Value>(std::move(value));
}

/// Shows a view as the active window, so that it can have the focus.
inline void present(QWidget& view, QSize size) {
  view.resize(size);
  view.show();
  view.activateWindow();
  QApplication::setActiveWindow(&view);
  QApplication::processEvents();
}

using Screen = std::unique_ptr<QWidget>;

/// The main window with these folders, at the first one's page or at the overview.
inline Screen mainWindow(const std::vector<MainFolder>& folders, bool isPage,
                         QSize size = {820, 1000}) {
  auto view = std::make_unique<MainView>(viewFormats(), "Bin");
  view->setState(shared(sampleState(folders)));
  if (!folders.empty())
    view->setSelection(isPage ? MainSelection::folder(1) : MainSelection::overview());
  present(*view, size);
  return view;
}

inline Screen popover(const MenuBarState& state) {
  auto view = std::make_unique<MenuBarView>();
  view->setState(shared(MenuBarState()));
  present(*view, view->sizeHint());
  view->setState(shared(state));
  present(*view, view->sizeHint());
  return view;
}

inline MenuBarState fullState() {
  MenuBarState state = sampleState({sampleFolder(1), sampleFolder(2)}).overview;
  state.subheadline = "2 folders";
  state.isFinderExtensionOff = true;
  state.folders[0].place = "/home/ada";
  state.forecast.push_back(sampleGroup("On restart", "Delete Permanently"));
  state.forecast[0].left = "a: no.";
  return state;
}

inline Screen settings(const SettingsState& state) {
  auto view = std::make_unique<SettingsView>();
  view->setState(state);
  present(*view, {420, 400});
  return view;
}

inline Screen setup(const SetupState& state) {
  auto view = std::make_unique<SetupView>();
  view->setState(state);
  present(*view, {420, 500});
  return view;
}

struct ScreenRow {
  const char* name;
  std::function<Screen()> make;
};

/// Every screen, with all of its controls.
inline std::vector<ScreenRow> screens() {
  const std::vector folders = {sampleFolder(1), sampleFolder(2)};
  return {{"a page", [=] { return mainWindow(folders, true); }},
          {"the overview", [=] { return mainWindow(folders, false); }},
          {"the popover", [] { return popover(fullState()); }},
          {"the settings", [] { return settings({.openAtLoginRequiresApproval = true}); }},
          {"the setup", [] { return setup({}); }},
          {"the setup, waiting", [] { return setup({.isOpenAtLoginRequiresApproval = true}); }}};
}

/// What assistive tools are told of a screen in reading order, a line each: the role and the name,
/// the value, what it is, and behind a dash the description.
inline void tell(const QAccessibleInterface& node, std::string& lines) {
  static const std::map<QAccessible::Role, const char*> roles = {
      {QAccessible::Window, "window"},     {QAccessible::Dialog, "dialog"},
      {QAccessible::StaticText, "text"},   {QAccessible::Graphic, "picture"},
      {QAccessible::List, "list"},         {QAccessible::ListItem, "row"},
      {QAccessible::PushButton, "button"}, {QAccessible::ButtonMenu, "menu"},
      {QAccessible::CheckBox, "box"},      {QAccessible::SpinBox, "number"},
      {QAccessible::ComboBox, "picker"},   {QAccessible::EditableText, "field"}};
  const QAccessible::State state = node.state();
  if (state.invisible) return;
  const auto textOf = [&](QAccessible::Text kind) { return node.text(kind).toStdString(); };
  const auto role = roles.find(node.role());
  const bool isEmpty = node.role() == QAccessible::StaticText && textOf(QAccessible::Name).empty();
  if (role != roles.end() && !isEmpty) {
    const std::string name = textOf(QAccessible::Name);
    lines += role->second + (name.empty() ? "" : " " + name);
    const std::string value = textOf(QAccessible::Value);
    if (!value.empty() && value != name) lines += " = " + value;
    if (state.checked) lines += ", checked";
    if (state.selected) lines += ", chosen";
    if (state.disabled) lines += ", off";
    const std::string description = textOf(QAccessible::Description);
    const bool saysMore = !description.empty() && description != name;
    lines += (saysMore ? " - " + description : "") + "\n";
  }
  const bool isControl = role != roles.end() && state.focusable && node.role() != QAccessible::List;
  for (int place = 0; place < node.childCount() && !isControl; ++place)
    tell(*node.child(place), lines);
}

inline std::string told(QWidget& screen) {
  std::string lines;
  tell(*QAccessible::queryAccessibleInterface(&screen), lines);
  return lines;
}

/// The widgets that take the focus, in the order in which assistive tools read them.
inline void collect(const QAccessibleInterface& node, std::vector<QWidget*>& found) {
  auto* widget = qobject_cast<QWidget*>(node.object());
  if (node.state().invisible) return;
  if (widget != nullptr && (widget->focusPolicy() & Qt::TabFocus) && widget->isEnabled() &&
      widget->focusProxy() == nullptr)
    found.push_back(widget);
  for (int place = 0; place < node.childCount(); ++place)
    collect(*node.child(place), found);
}

inline std::vector<QWidget*> controlsOf(QWidget& screen) {
  std::vector<QWidget*> controls;
  collect(*QAccessible::queryAccessibleInterface(&screen), controls);
  return controls;
}

/// What a screen reader calls a widget.
inline std::string spokenName(QWidget& widget) {
  QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&widget);
  return interface == nullptr ? "" : interface->text(QAccessible::Name).toStdString();
}

/// All widgets of a type below a view. The toolkit's own search doesn't tell apart types that it
/// has no meta-object of.
template <class Widget>
std::vector<Widget*> childrenOf(const QWidget& view) {
  std::vector<Widget*> found;
  for (QWidget* candidate : view.findChildren<QWidget*>()) {
    if (auto* widget = dynamic_cast<Widget*>(candidate)) found.push_back(widget);
  }
  return found;
}

/// The first widget of a type below a view, or the first that also has this accessible name; null
/// if there is none.
template <class Widget>
Widget* child(const QWidget& view, const std::optional<std::string>& name = std::nullopt) {
  for (Widget* widget : childrenOf<Widget>(view)) {
    if (!name || spokenName(*widget) == *name) return widget;
  }
  return nullptr;
}

}  // namespace tidemar::testing
