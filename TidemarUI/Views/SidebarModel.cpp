#include "TidemarUI/Views/SidebarModel.h"

#include <algorithm>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

std::vector<SidebarRow> sidebarRows(const MainState& state) {
  std::vector<SidebarRow> rows{{.selection = MainSelection::overview(),
                                .name = std::string(labels::overview),
                                .path = {},
                                .detail = {}}};
  if (!state.folders.empty()) {
    rows.push_back({.selection = std::nullopt,
                    .name = std::string(labels::folders),
                    .path = {},
                    .detail = {}});
  }
  for (const MainFolder& folder : state.folders) {
    rows.push_back({.selection = MainSelection::folder(folder.id),
                    .name = folder.name,
                    .path = folder.path,
                    .detail = folder.distanceToGoing});
  }
  return rows;
}

void SidebarModel::setRows(const std::vector<SidebarRow>& rows) {
  for (int index = rowCount() - 1; index >= 0; --index) {
    const auto& selection = _rows[static_cast<std::size_t>(index)].selection;
    if (std::ranges::find(rows, selection, &SidebarRow::selection) != rows.end()) continue;
    beginRemoveRows({}, index, index);
    _rows.erase(_rows.begin() + index);
    endRemoveRows();
  }
  for (int index = 0; index < static_cast<int>(rows.size()); ++index) {
    const SidebarRow& row = rows[static_cast<std::size_t>(index)];
    const int from = position(row.selection);
    if (from < 0) {
      beginInsertRows({}, index, index);
      _rows.insert(_rows.begin() + index, row);
      endInsertRows();
      continue;
    }
    if (from != index) {
      beginMoveRows({}, from, from, {}, index);
      std::rotate(_rows.begin() + index, _rows.begin() + from, _rows.begin() + from + 1);
      endMoveRows();
    }
    SidebarRow& shown = _rows[static_cast<std::size_t>(index)];
    if (shown == row) continue;
    shown = row;
    emit dataChanged(createIndex(index, 0), createIndex(index, 0));
  }
}

const SidebarRow& SidebarModel::row(const QModelIndex& index) const {
  return _rows.at(static_cast<std::size_t>(index.row()));
}

QModelIndex SidebarModel::indexOf(const std::optional<MainSelection>& selection) const {
  const int found = selection ? position(selection) : -1;
  return found < 0 ? QModelIndex() : createIndex(found, 0);
}

int SidebarModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const {
  const SidebarRow& shown = row(index);
  switch (role) {
    case Qt::DisplayRole:
      return textOf(shown.name);
    case Qt::AccessibleTextRole:
      return textOf(shown.detail.empty() ? shown.name : shown.name + ", " + shown.detail);
    default:
      return {};
  }
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex& index) const {
  if (!row(index).selection) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

int SidebarModel::position(const std::optional<MainSelection>& selection) const {
  const auto found = std::ranges::find(_rows, selection, &SidebarRow::selection);
  return found == _rows.end() ? -1 : static_cast<int>(found - _rows.begin());
}

}  // namespace tidemar
