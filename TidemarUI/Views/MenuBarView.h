#pragma once

#include <QPushButton>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/MenuBarState.h"
#include "TidemarUI/Views/ForecastList.h"
#include "TidemarUI/Views/KeyedColumn.h"
#include "TidemarUI/Views/MenuRow.h"
#include "TidemarUI/Views/RecentRunList.h"
#include "TidemarUI/Views/ScrollColumn.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

/// The popover's content. It scrolls where it is higher than its place; its last two rows always
/// show.
class MenuBarView : public QWidget {
 public:
  explicit MenuBarView(const SystemNames& names = {}, QWidget* parent = nullptr);

  std::function<void()> onTurnOnFinderExtension;
  std::function<void(const FolderSummary&)> onSelectFolder;
  std::function<void(const RecentRun&)> onUndo;
  std::function<void(const std::vector<FileURL>&)> onShowInFinder;
  std::function<void()> onOpen;
  std::function<void()> onQuit;

  /// Keeps the state, which can be part of a larger one, until it is given the next one.
  void setState(std::shared_ptr<const MenuBarState> state);

  /// Its own width, and the height at which nothing of the state scrolls.
  QSize sizeHint() const override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  class FolderRow;

  QWidget* makeWarning(const SystemNames& names);
  QWidget* makeFolders();
  QWidget* makeFooter();
  void showFolders();

  std::shared_ptr<const MenuBarState> _state;  ///< Never null.
  ScrollColumn* _scroll;
  QWidget* _warning;
  TextLabel* _headline;
  TextLabel* _subheadline;
  TextLabel* _invitation;
  ForecastList* _forecast;
  QWidget* _foldersBlock;
  KeyedColumn<std::int64_t, FolderRow>* _folders;
  RecentRunList* _recentRuns;
  QWidget* _footer;
  int _contentHeight = 0;
};

}  // namespace tidemar
