#include "TidemarUI/Views/SidebarModel.h"

#include <algorithm>
#include <deque>
#include <map>
#include <numeric>
#include <utility>

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
  Places places = placesOf(rows);
  removeAllBut(places);
  reorder(places);
  insertMissing(rows, places);
  change(rows);
}

/// Where each of these rows stands now; none for a row that is new. Of rows with one selection the
/// first here is the first there.
SidebarModel::Places SidebarModel::placesOf(const std::vector<SidebarRow>& rows) const {
  std::map<std::optional<MainSelection>, std::deque<std::size_t>> free;
  for (std::size_t place = 0; place < _rows.size(); ++place)
    free[_rows[place].selection].push_back(place);
  Places places;
  for (const SidebarRow& row : rows) {
    std::deque<std::size_t>& same = free[row.selection];
    places.push_back(same.empty() ? std::nullopt : std::optional(same.front()));
    if (!same.empty()) same.pop_front();
  }
  return places;
}

/// Takes out all rows that are at none of these places, and brings the places up to date.
void SidebarModel::removeAllBut(Places& places) {
  std::vector<bool> isKept(_rows.size());
  for (const auto& place : places) {
    if (place) isKept[*place] = true;
  }
  for (std::size_t end = isKept.size(); end > 0; --end) {
    if (isKept[end - 1]) continue;
    std::size_t begin = end - 1;
    while (begin > 0 && !isKept[begin - 1])
      --begin;
    beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
    _rows.erase(_rows.begin() + static_cast<std::ptrdiff_t>(begin),
                _rows.begin() + static_cast<std::ptrdiff_t>(end));
    endRemoveRows();
    end = begin + 1;
  }
  std::vector<std::size_t> ranks(isKept.size());
  std::exclusive_scan(isKept.begin(), isKept.end(), ranks.begin(), std::size_t{0});
  for (auto& place : places) {
    if (place) place = ranks[*place];
  }
}

/// Brings the rows that stay into their new order, which is that of these places.
void SidebarModel::reorder(const Places& places) {
  std::vector<std::size_t> order;
  for (const auto& place : places) {
    if (place) order.push_back(*place);
  }
  if (std::ranges::is_sorted(order)) return;
  emit layoutAboutToBeChanged({}, VerticalSortHint);
  std::vector<SidebarRow> rows;
  QModelIndexList before;
  QModelIndexList after;
  for (const std::size_t place : order) {
    before.push_back(createIndex(static_cast<int>(place), 0));
    after.push_back(createIndex(static_cast<int>(rows.size()), 0));
    rows.push_back(std::move(_rows[place]));
  }
  _rows = std::move(rows);
  changePersistentIndexList(before, after);
  emit layoutChanged({}, VerticalSortHint);
}

void SidebarModel::insertMissing(const std::vector<SidebarRow>& rows, const Places& places) {
  for (std::size_t begin = 0; begin < rows.size(); ++begin) {
    if (places[begin]) continue;
    std::size_t end = begin + 1;
    while (end < rows.size() && !places[end])
      ++end;
    beginInsertRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
    _rows.insert(_rows.begin() + static_cast<std::ptrdiff_t>(begin),
                 rows.begin() + static_cast<std::ptrdiff_t>(begin),
                 rows.begin() + static_cast<std::ptrdiff_t>(end));
    endInsertRows();
    begin = end;
  }
}

/// Gives the rows, which are in place, what they show.
void SidebarModel::change(const std::vector<SidebarRow>& rows) {
  std::optional<std::size_t> first;
  std::size_t last = 0;
  for (std::size_t place = 0; place < rows.size(); ++place) {
    if (_rows[place] == rows[place]) continue;
    _rows[place] = rows[place];
    if (!first) first = place;
    last = place;
  }
  if (first)
    emit dataChanged(createIndex(static_cast<int>(*first), 0),
                     createIndex(static_cast<int>(last), 0));
}

const SidebarRow& SidebarModel::row(const QModelIndex& index) const {
  return _rows.at(static_cast<std::size_t>(index.row()));
}

QModelIndex SidebarModel::indexOf(const std::optional<MainSelection>& selection) const {
  if (!selection) return {};
  const auto found = std::ranges::find(_rows, selection, &SidebarRow::selection);
  return found == _rows.end() ? QModelIndex()
                              : createIndex(static_cast<int>(found - _rows.begin()), 0);
}

int SidebarModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(_rows.size());
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const SidebarRow& shown = row(index);
  switch (role) {
    case Qt::DisplayRole:
      return textOf(shown.name);
    case Qt::AccessibleTextRole:
      return textOf(shown.detail.empty() ? shown.name : shown.name + ", " + shown.detail);
    case Qt::ToolTipRole:
      return shown.isFolder() ? plainToolTip(textOf(shown.path)) : QVariant();
    case Qt::AccessibleDescriptionRole:
      return shown.isFolder() ? textOf(shown.path) : QVariant();
    default:
      return {};
  }
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex& index) const {
  if (!index.isValid() || !row(index).selection) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

}  // namespace tidemar
