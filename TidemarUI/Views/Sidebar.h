#pragma once

#include <QListView>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/MainState.h"
#include "TidemarUI/State/SystemNames.h"
#include "TidemarUI/Views/SidebarModel.h"

namespace tidemar {

/// The list of the overview and of all folders.
class Sidebar : public QListView {
 public:
  explicit Sidebar(const SystemNames& names);

  /// The user chose another row; not called for what the program selects.
  std::function<void(const MainSelection&)> onSelect;

  // The entries of a row's context menu act on that row, whatever is selected. The key Delete acts
  // on the row that it stands on.
  std::function<void(std::int64_t id)> onRemoveFolder;
  std::function<void(const std::vector<FileURL>&)> onShowInFinder;

  void setState(const MainState& state, const std::optional<MainSelection>& selection);

 protected:
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  SystemNames _names;
  SidebarModel _model;
  std::optional<MainSelection> _chosen;  ///< On its way out.
  bool _isFollowing = false;             ///< The change of the current row comes from the program.
};

}  // namespace tidemar
