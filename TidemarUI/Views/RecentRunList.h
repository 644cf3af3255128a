#pragma once

#include <QPushButton>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <span>

#include "TidemarUI/State/RecentRuns.h"
#include "TidemarUI/Views/KeyedColumn.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

/// One cleaning: what it took, and the way back where there is one.
class RecentRunRow : public QWidget {
 public:
  RecentRunRow();

  std::function<void(const RecentRun&)> onPutBack;

  void setRun(const RecentRun& run);

 private:
  RecentRun _run;
  TextLabel* _summary;
  TextLabel* _detail;
  QPushButton* _putBack;
};

/// The block "Recent" with a row for each run.
class RecentRunList : public QWidget {
 public:
  RecentRunList();

  std::function<void(const RecentRun&)> onPutBack;

  void setRuns(std::span<const RecentRun> runs);

 private:
  KeyedColumn<std::int64_t, RecentRunRow>* _rows;
};

}  // namespace tidemar
