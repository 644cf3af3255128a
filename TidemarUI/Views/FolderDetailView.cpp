#include "TidemarUI/Views/FolderDetailView.h"

#include <QPointer>

#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/DisposalSection.h"
#include "TidemarUI/Views/IconView.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/ReadingOrder.h"
#include "TidemarUI/Views/RulesSection.h"

namespace tidemar {
namespace {

constexpr int iconSize = 32;
constexpr int columnWidth = 720;
constexpr int cardPadding = 14;

}  // namespace

FolderDetailView::FolderDetailView(const Formats& formats, const std::string& binName,
                                   const SystemNames& names)
    : _folder(std::make_shared<const MainFolder>()),
      _scroll(new ScrollColumn(style::scaled(columnWidth))),
      _rules(new RulesSection(formats, binName, names)),
      _disposal(new DisposalSection(binName)) {
  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->addWidget(_scroll);

  QVBoxLayout& column = _scroll->column();
  column.setContentsMargins(7 * style::grid, 6 * style::grid, 7 * style::grid, 6 * style::grid);
  column.setSpacing(5 * style::grid);
  column.addLayout(makeHeader(names));
  _temporarySection = makeTemporarySection();
  column.addWidget(_temporarySection);
  _previewSection = makePreviewSection(names);
  column.addWidget(_previewSection);
  column.addWidget(_rules);
  column.addWidget(_disposal);
  column.addStretch();

  const auto changeSettings = [this](const TemporarySettings& shown,
                                     const TemporarySettings& wanted) {
    callClosure(onChangeSettings, _folder->id, shown, wanted);
  };
  _rules->onChangeSettings = changeSettings;
  _disposal->onChangeSettings = changeSettings;
}

QLayout* FolderDetailView::makeHeader(const SystemNames& names) {
  _icon = new IconView(iconSize);
  _name = new TextLabel(style::TextSize::folderName, QFont::DemiBold, TextLabel::Tone::primary,
                        TextLabel::Overflow::elideInMiddle);
  _path = new TextLabel(style::TextSize::secondary, QFont::Normal, TextLabel::Tone::secondary,
                        TextLabel::Overflow::elideInMiddle);
  auto* show = new QPushButton(textOf(labels::showInFinder(names)));
  show->setAutoDefault(false);
  connect(show, &QPushButton::clicked, this,
          [this] { callClosure(onShowInFinder, std::vector{FileURL(_folder->path)}); });

  auto* line = new QHBoxLayout;
  line->setSpacing(3 * style::grid);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(0);
  texts->addWidget(_name);
  texts->addWidget(_path);
  line->addWidget(_icon);
  line->addLayout(texts, 1);
  line->addWidget(show);
  return line;
}

FormSection* FolderDetailView::makeTemporarySection() {
  auto* title = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::primary,
                              TextLabel::Overflow::wrap);
  title->show(labels::temporary);
  auto* explanation = new TextLabel(style::TextSize::secondary, QFont::Normal,
                                    TextLabel::Tone::secondary, TextLabel::Overflow::wrap);
  explanation->show(labels::temporaryExplanation);
  _temporary = new Switch;
  _temporary->setAccessibleName(textOf(labels::temporary));
  _temporary->onToggle = [this](bool isOn) { callClosure(onSetTemporary, _folder->id, isOn); };
  title->setBuddy(_temporary);

  auto* section = new FormSection;
  auto* row = new FormRow;
  auto* texts = new QVBoxLayout;
  texts->setSpacing(1);
  texts->addWidget(title);
  texts->addWidget(explanation);
  row->line().addLayout(texts, 1);
  row->line().addWidget(_temporary);
  section->card().addRow(row);
  return section;
}

FormSection* FolderDetailView::makePreviewSection(const SystemNames& names) {
  _previewHeadline = new TextLabel(style::TextSize::sectionHeadline, QFont::DemiBold,
                                   TextLabel::Tone::primary, TextLabel::Overflow::wrap);
  _previewHeadline->setContentsMargins(style::rowOutset, 0, style::rowOutset, 0);
  _forecast = new ForecastList(names);
  _forecast->onShowInFinder = [this](const std::vector<FileURL>& items) {
    callClosure(onShowInFinder, items);
  };

  auto* section = new FormSection(labels::whatGoes);
  auto* content = new QWidget;
  auto* column = new QVBoxLayout(content);
  const int side = cardPadding - style::rowOutset;
  column->setContentsMargins(side, 3 * style::grid, side, 3 * style::grid);
  column->setSpacing(2 * style::grid);
  column->addWidget(_previewHeadline);
  column->addWidget(_forecast);
  section->card().addRow(content);
  return section;
}

void FolderDetailView::setFolder(const std::shared_ptr<const MainFolder>& folder) {
  const auto next = folder ? folder : std::make_shared<const MainFolder>();
  const bool isOther = next->id != _folder->id;
  if (isOther || !next->isTemporary) {
    const QPointer<FolderDetailView> self(this);
    finishEdits();
    if (!self) return;
    _disposal->cancelConfirmation();
  }
  const auto before = std::exchange(_folder, next);
  if (isOther || next->path != before->path) _icon->show(icons::folder(next->path));
  showFolder(*next);
  if (isOther) _scroll->scrollToTop();
}

void FolderDetailView::showFolder(const MainFolder& folder) {
  _name->show(folder.name);
  _path->show(folder.path);
  _temporary->show(folder.isTemporary);
  _temporary->setEnabled(canSetTemporary(folder));
  const std::string_view footer = temporaryFooter(folder).value_or(std::string_view());
  _temporarySection->setFooter(footer);
  _temporary->setAccessibleDescription(
      textOf(_temporary->isEnabled() ? labels::temporaryExplanation : footer));

  _previewHeadline->show(folder.preview.headline);
  const QString explanation = textOf(nowExplanation(folder.preview));
  _previewSection->setToolTip(explanation);
  _previewHeadline->setAccessibleDescription(explanation);
  _forecast->setGroups({_folder, &folder.preview.forecast});
  _forecast->setVisible(!folder.preview.forecast.empty());
  // Also where nothing differs: a number that couldn't be stored goes back to the stored one.
  _rules->setSettings(folder.settings);
  _disposal->setSettings(folder.settings);
  for (QWidget* section : std::initializer_list<QWidget*>{_previewSection, _rules, _disposal})
    section->setVisible(folder.isTemporary);
  restoreReadingOrder(*this);
}

void FolderDetailView::finishEdits() {
  const QPointer<FolderDetailView> self(this);
  _rules->finishEdits();
  if (self) _disposal->finishEdit();
}

}  // namespace tidemar
