#pragma once

#include <QAbstractListModel>
#include <optional>
#include <string>
#include <vector>

#include "TidemarUI/State/MainState.h"

namespace tidemar {

/// A row of the sidebar.
struct SidebarRow {
  std::optional<MainSelection> selection;  ///< None for a title between the rows.
  std::string name;
  std::string path;    ///< Of a folder's row.
  std::string detail;  ///< The second line.

  bool isFolder() const { return selection && selection->folderID; }

  friend bool operator==(const SidebarRow&, const SidebarRow&) = default;
};

/// The rows from top to bottom.
std::vector<SidebarRow> sidebarRows(const MainState& state);

/// The sidebar's rows for a list view. A row that stays keeps its index, so that the view keeps its
/// place and what is under the pointer. It is known by its selection and, among rows of the same
/// one, by how many stand before it. Takes time in proportion to the rows, however many change.
class SidebarModel : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  void setRows(const std::vector<SidebarRow>& rows);
  const SidebarRow& row(const QModelIndex& index) const;

  /// The row with that selection; an invalid index where there is none.
  QModelIndex indexOf(const std::optional<MainSelection>& selection) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  using Places = std::vector<std::optional<std::size_t>>;

  Places placesOf(const std::vector<SidebarRow>& rows) const;
  void removeAllBut(Places& places);
  void reorder(const Places& places);
  void insertMissing(const std::vector<SidebarRow>& rows, const Places& places);
  void change(const std::vector<SidebarRow>& rows);

  std::vector<SidebarRow> _rows;
};

}  // namespace tidemar
