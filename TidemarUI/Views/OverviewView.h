#pragma once

#include <QStackedWidget>
#include <functional>
#include <memory>
#include <vector>

#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/MainState.h"
#include "TidemarUI/Views/ForecastList.h"
#include "TidemarUI/Views/RecentRunList.h"
#include "TidemarUI/Views/ScrollColumn.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

/// What goes when out of all folders, and what went; without any folder an invitation.
class OverviewView : public QStackedWidget {
 public:
  explicit OverviewView(const SystemNames& names);

  std::function<void(const RecentRun&)> onPutBack;
  std::function<void(const std::vector<FileURL>&)> onShowInFinder;

  void setState(const std::shared_ptr<const MainState>& state);

 private:
  QWidget* _invitation;
  ScrollColumn* _summary;
  TextLabel* _headline;
  TextLabel* _subheadline;
  ForecastList* _forecast;
  RecentRunList* _recentRuns;
};

}  // namespace tidemar
