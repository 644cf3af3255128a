#include "TidemarUI/Views/RecentRunList.h"

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/Closures.h"

namespace tidemar {

RecentRunRow::RecentRunRow()
    : _summary(new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::primary,
                             TextLabel::Overflow::elideInMiddle)),
      _detail(new TextLabel(style::TextSize::secondary, QFont::Normal, TextLabel::Tone::secondary,
                            TextLabel::Overflow::elideInMiddle)),
      _putBack(new QPushButton(textOf(labels::putBack))) {
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(style::rowOutset, 6, style::rowOutset, 6);
  line->setSpacing(3 * style::grid);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(0);
  texts->addWidget(_summary);
  texts->addWidget(_detail);
  line->addLayout(texts, 1);
  line->addWidget(_putBack);
  _putBack->setAutoDefault(false);
  connect(_putBack, &QPushButton::clicked, this, [this] {
    const RecentRun run = _run;
    callClosure(onPutBack, run);
  });
}

void RecentRunRow::setRun(const RecentRun& run) {
  _run = run;
  _summary->show(run.summary);
  _detail->show(run.detail);
  setAccessibleName(textOf(run.summary + ", " + run.detail));
  _putBack->setAccessibleName(textOf(run.putBackLabel));
  _putBack->setVisible(run.canPutBack);
}

RecentRunList::RecentRunList() : _rows(new KeyedColumn<std::int64_t, RecentRunRow>) {
  markAsList(*_rows, labels::recent);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(style::grid);
  column->addWidget(makeBlockTitle(labels::recent));
  column->addWidget(_rows);
}

void RecentRunList::setRuns(std::span<const RecentRun> runs) {
  _rows->update(
      runs, [](const RecentRun& run) { return run.id; },
      [this] {
        auto* row = new RecentRunRow;
        row->onPutBack = [this](const RecentRun& run) { callClosure(onPutBack, run); };
        return row;
      },
      [](RecentRunRow& row, const RecentRun& run) { row.setRun(run); });
}

}  // namespace tidemar
