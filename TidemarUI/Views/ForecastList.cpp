#include "TidemarUI/Views/ForecastList.h"

#include "TidemarUI/State/ForecastRows.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/MenuRow.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

class ForecastRow : public MenuRow {
 public:
  explicit ForecastRow(const ForecastList& list) {
    _hint = textOf(labels::showInFinder(list.names()));
    connect(this, &QPushButton::clicked, this, [this, &list] {
      const auto items = _items;
      callClosure(list.onShowInFinder, *items);
    });
  }

  /// Shares the ownership of what the group is part of: a row can stand for a million items.
  void show(const ForecastGroup& group, const std::shared_ptr<const void>& owner) {
    _items = {owner, &group.items};
    const QString left = textOf(group.left);
    setAccessibleDescription(left);
    setToolTip(plainToolTip(left.isEmpty() ? _hint : left + u'\n' + _hint));
    setContent({.title = textOf(group.when),
                .isTitleStrong = true,
                .trailing = textOf(rowSummary(group)),
                .detail = textOf(rowNames(group))});
  }

 private:
  QString _hint;
  std::shared_ptr<const std::vector<FileURL>> _items;
};

}  // namespace

/// The groups of one action under its title.
class ForecastSectionView : public QWidget {
 public:
  explicit ForecastSectionView(const ForecastList& list)
      : _list(list), _title(makeBlockTitle({})), _rows(new KeyedColumn<std::string, ForecastRow>) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(style::grid);
    column->addWidget(_title);
    column->addWidget(_rows);
  }

  void show(const ForecastSection& section, const std::shared_ptr<const void>& owner) {
    _title->show(section.title);
    markAsList(*_rows, section.title);
    _title->setTone(section.isPermanent ? TextLabel::Tone::warning : TextLabel::Tone::secondary);
    _rows->update(
        section.groups, [](const ForecastGroup& group) { return group.id(); },
        [this] { return new ForecastRow(_list); },
        [&owner](ForecastRow& row, const ForecastGroup& group) { row.show(group, owner); });
  }

 private:
  const ForecastList& _list;
  TextLabel* _title;
  KeyedColumn<std::string, ForecastRow>* _rows;
};

ForecastList::ForecastList(const SystemNames& names)
    : _names(names), _sections(new KeyedColumn<std::string, ForecastSectionView>(4 * style::grid)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(_sections);
}

void ForecastList::setGroups(const std::shared_ptr<const std::vector<ForecastGroup>>& groups) {
  const std::vector<ForecastSection> sections = forecastSections(*groups);
  _sections->update(
      sections, [](const ForecastSection& section) { return section.title; },
      [this] { return new ForecastSectionView(*this); },
      [&groups](ForecastSectionView& view, const ForecastSection& section) {
        view.show(section, groups);
      });
}

}  // namespace tidemar
