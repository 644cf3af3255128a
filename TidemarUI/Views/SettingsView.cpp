#include "TidemarUI/Views/SettingsView.h"

#include <QPushButton>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Card.h"
#include "TidemarUI/Views/Closures.h"

namespace tidemar {
namespace {

constexpr int contentWidth = 420;

QWidget* makeSwitchRow(std::string_view title, Switch& control) {
  auto* label = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::primary,
                              TextLabel::Overflow::wrap);
  label->show(title);
  label->setBuddy(&control);
  control.setAccessibleName(textOf(title));
  auto* row = new FormRow;
  row->line().addWidget(label, 1);
  row->line().addWidget(&control);
  return row;
}

QWidget* makeButtonRow(std::string_view title, TextLabel::Tone tone, std::string_view button,
                       const std::function<void()>& closure) {
  auto* label =
      new TextLabel(style::TextSize::body, QFont::Normal, tone, TextLabel::Overflow::wrap);
  label->show(title);
  auto* push = new QPushButton(textOf(button));
  push->setAutoDefault(false);
  push->setAccessibleDescription(textOf(title));
  QObject::connect(push, &QPushButton::clicked, push, [&closure] { callClosure(closure); });
  auto* row = new FormRow;
  row->line().addWidget(label, 1);
  row->line().addWidget(push);
  return row;
}

}  // namespace

SettingsView::SettingsView(const SystemNames& names, QWidget* parent)
    : QWidget(parent), _openAtLogin(new Switch), _showInMenuBar(new Switch) {
  setFixedWidth(style::scaled(contentWidth));
  _approval = makeButtonRow(labels::needsApproval, TextLabel::Tone::secondary,
                            labels::openLoginItems, onOpenLoginItemsSettings);
  _approval->hide();
  auto* preferences = new FormSection;
  preferences->card().addRow(makeSwitchRow(labels::openAtLogin, *_openAtLogin));
  preferences->card().addRow(_approval);
  preferences->card().addRow(makeSwitchRow(labels::showInMenuBar, *_showInMenuBar));
  preferences->setFooter(labels::settingsFooter);

  auto* setup = new FormSection;
  setup->card().addRow(makeButtonRow(labels::setUpExplanation(names), TextLabel::Tone::primary,
                                     labels::setUp, onOpenSetup));

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(5 * style::grid, 5 * style::grid, 5 * style::grid, 5 * style::grid);
  column->setSpacing(4 * style::grid);
  column->addWidget(preferences);
  column->addWidget(setup);
  column->addStretch();

  _openAtLogin->onToggle = [this](bool isOn) { callClosure(onToggleOpenAtLogin, isOn); };
  _showInMenuBar->onToggle = [this](bool isOn) { callClosure(onToggleShowInMenuBar, isOn); };
}

void SettingsView::setState(const SettingsState& state) {
  _openAtLogin->show(state.openAtLogin);
  _approval->setVisible(state.openAtLoginRequiresApproval);
  _showInMenuBar->show(state.showInMenuBar);
}

}  // namespace tidemar
