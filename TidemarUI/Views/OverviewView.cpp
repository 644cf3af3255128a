#include "TidemarUI/Views/OverviewView.h"

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/ReadingOrder.h"

namespace tidemar {
namespace {

constexpr int columnWidth = 720;
constexpr int invitationWidth = 340;

QWidget* makeInvitation(const SystemNames& names) {
  auto* label = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                              TextLabel::Overflow::wrap);
  label->show(labels::overviewInvitation(names));
  label->setAlignment(Qt::AlignCenter);
  label->setFixedWidth(style::scaled(invitationWidth));
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  column->addWidget(label, 0, Qt::AlignCenter);
  return page;
}

}  // namespace

OverviewView::OverviewView(const SystemNames& names)
    : _invitation(makeInvitation(names)),
      _summary(new ScrollColumn(style::scaled(columnWidth))),
      _headline(new TextLabel(style::TextSize::pageHeadline, QFont::DemiBold,
                              TextLabel::Tone::primary, TextLabel::Overflow::wrap)),
      _subheadline(new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                                 TextLabel::Overflow::wrap)),
      _forecast(new ForecastList(names)),
      _recentRuns(new RecentRunList) {
  for (TextLabel* label : {_headline, _subheadline})
    label->setContentsMargins(style::rowOutset, 0, style::rowOutset, 0);
  const int side = 7 * style::grid - style::rowOutset;
  QVBoxLayout& column = _summary->column();
  column.setContentsMargins(side, 6 * style::grid, side, 6 * style::grid);
  column.setSpacing(5 * style::grid);
  auto* headlines = new QVBoxLayout;
  headlines->setSpacing(2);
  headlines->addWidget(_headline);
  headlines->addWidget(_subheadline);
  column.addLayout(headlines);
  column.addWidget(_forecast);
  column.addWidget(_recentRuns);
  column.addStretch();
  addWidget(_invitation);
  addWidget(_summary);

  _forecast->onShowInFinder = [this](const std::vector<FileURL>& items) {
    callClosure(onShowInFinder, items);
  };
  _recentRuns->onPutBack = [this](const RecentRun& run) { callClosure(onPutBack, run); };
}

void OverviewView::setState(const std::shared_ptr<const MainState>& state) {
  const MenuBarState& overview = state->overview;
  const OverviewBlocks blocks = overviewBlocks(*state);
  setCurrentWidget(blocks.hasInvitation ? _invitation : _summary);
  _headline->show(overview.headline);
  _subheadline->show(overview.subheadline);
  _forecast->setGroups({state, &overview.forecast});
  _forecast->setVisible(blocks.hasForecast);
  _recentRuns->setRuns(overview.recentRuns);
  _recentRuns->setVisible(blocks.hasRecentRuns);
  restoreReadingOrder(*this);
}

}  // namespace tidemar
