#pragma once

#include <QVBoxLayout>
#include <QWidget>
#include <deque>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tidemar {

/// A column of widgets, one for each value of a list. A row is known by its value's key and, among
/// values of the same key, by how many of them stand before it: so every value has a row of its
/// own, whatever the keys. A row stays the same widget as long as its value is in the list, so that
/// focus, hover and place survive a refresh; a row without a value is gone at once.
template <class Key, class Row>
class KeyedColumn : public QWidget {
 public:
  explicit KeyedColumn(int spacing = 0) : _layout(new QVBoxLayout(this)) {
    _layout->setContentsMargins(0, 0, 0, 0);
    _layout->setSpacing(spacing);
  }

  /// Room over and under the rows, for those of a long list that are out of sight.
  void setRoom(int above, int below) { _layout->setContentsMargins(0, above, 0, below); }

  /// `keyOf(value)` names a value, `make()` answers a new row, `show(row, value)` fills one.
  template <class Values, class KeyOf, class Make, class Show>
  void update(const Values& values, KeyOf keyOf, Make make, Show show) {
    keepRowsOf(values, keyOf);
    int index = 0;
    for (const auto& value : values) {
      Row*& row = _rows[static_cast<std::size_t>(index)].second;
      if (row == nullptr) row = make();
      const QLayoutItem* present = _layout->itemAt(index);
      if (present == nullptr || present->widget() != row) {
        _layout->insertWidget(index, row);
        // At once, so that the column's size counts it already.
        row->QWidget::show();
      }
      show(*row, value);
      ++index;
    }
  }

 private:
  /// Leaves an entry for each value, without a widget where the value is new.
  template <class Values, class KeyOf>
  void keepRowsOf(const Values& values, KeyOf keyOf) {
    std::unordered_map<Key, std::deque<Row*>> free;
    for (const auto& [key, row] : std::exchange(_rows, {}))
      free[key].push_back(row);
    for (const auto& value : values) {
      Key key = keyOf(value);
      std::deque<Row*>& same = free[key];
      _rows.emplace_back(std::move(key), same.empty() ? nullptr : same.front());
      if (!same.empty()) same.pop_front();
    }
    for (const auto& [key, rows] : free) {
      for (Row* row : rows) {
        _layout->removeWidget(row);
        row->hide();
        row->deleteLater();
      }
    }
  }

  QVBoxLayout* _layout;
  std::vector<std::pair<Key, Row*>> _rows;
};

}  // namespace tidemar
