#pragma once

#include <QAction>
#include <QStackedWidget>
#include <QToolButton>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/MainState.h"
#include "TidemarUI/State/SystemNames.h"

namespace tidemar {

class FolderDetailView;
class OverviewView;
class Sidebar;

/// The main window's content: the sidebar with its bar, and beside it the overview or a folder's
/// screen.
class MainView : public QWidget {
 public:
  MainView(const Formats& formats, const std::string& binName, const SystemNames& names = {},
           QWidget* parent = nullptr);

  std::function<void(const std::optional<MainSelection>&)> onSelect;
  std::function<void()> onAddFolder;
  std::function<void(std::int64_t id)> onRemoveFolder;
  std::function<void(std::int64_t id, bool isTemporary)> onSetTemporary;
  /// `shown` is what the user saw when he made the edit, `wanted` the same with what he changed.
  std::function<void(std::int64_t id, const TemporarySettings& shown,
                     const TemporarySettings& wanted)>
      onChangeSettings;
  std::function<void(const RecentRun&)> onPutBack;
  std::function<void(const std::vector<FileURL>&)> onShowInFinder;

  /// Keeps the state until it is given the next one and copies nothing of it. It compares nothing
  /// either: whoever makes the states knows whether one differs. A state that is large to destroy
  /// takes care of where that happens by its deleter.
  void setState(std::shared_ptr<const MainState> state);
  void setSelection(const std::optional<MainSelection>& selection);

  /// Hands out what is being edited. A window that is closed does so too; call it before one is
  /// destroyed without that.
  void finishEdits();

  /// What the menu button at the end of the bar opens.
  void setMenuActions(const QList<QAction*>& actions);

  /// The smallest window in which every page reads; wider with large type.
  QSize minimumSizeHint() const override;

 protected:
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  QWidget* makeSidebarPane();
  QWidget* makeBar();
  void connectClosures();
  void fitSidebar();
  void showState();

  std::shared_ptr<const MainState> _state;  ///< Never null.
  std::optional<MainSelection> _selection;
  QWidget* _sidebarPane;
  Sidebar* _sidebar;
  QToolButton* _add;
  QToolButton* _remove;
  QToolButton* _menu;
  QStackedWidget* _detail;
  OverviewView* _overview;
  FolderDetailView* _folder;
};

}  // namespace tidemar
