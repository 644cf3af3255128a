#pragma once

#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <utility>
#include <vector>

namespace tidemar {

/// A column of widgets, one for each value of a list. A widget stays the same as long as its
/// value's key is in the list, so that focus, hover and place survive a refresh.
template <class Key, class Row>
class KeyedColumn : public QWidget {
 public:
  explicit KeyedColumn(int spacing = 0) : _layout(new QVBoxLayout(this)) {
    _layout->setContentsMargins(0, 0, 0, 0);
    _layout->setSpacing(spacing);
  }

  /// `keyOf(value)` tells the values apart, `make()` answers a new row, `show(row, value)` fills
  /// one. Answers whether rows came, went or moved.
  template <class Values, class KeyOf, class Make, class Show>
  bool update(const Values& values, KeyOf keyOf, Make make, Show show) {
    bool isChanged = removeAllBut(values, keyOf);
    std::vector<std::pair<Key, Row*>> rows;
    for (const auto& value : values) {
      const Key key = keyOf(value);
      Row* row = find(key);
      const int index = static_cast<int>(rows.size());
      if (row == nullptr) row = make();
      if (_layout->indexOf(row) != index) {
        _layout->insertWidget(index, row);
        // At once, so that the column's size counts it already.
        row->QWidget::show();
        isChanged = true;
      }
      show(*row, value);
      rows.emplace_back(key, row);
    }
    _rows = std::move(rows);
    return isChanged;
  }

 private:
  template <class Values, class KeyOf>
  bool removeAllBut(const Values& values, KeyOf keyOf) {
    const auto isGone = [&](const auto& entry) {
      return std::none_of(values.begin(), values.end(),
                          [&](const auto& value) { return keyOf(value) == entry.first; });
    };
    return std::erase_if(_rows, [&](const auto& entry) {
             if (!isGone(entry)) return false;
             _layout->removeWidget(entry.second);
             entry.second->hide();
             entry.second->deleteLater();
             return true;
           }) > 0;
  }

  Row* find(const Key& key) const {
    const auto found = std::ranges::find(_rows, key, &std::pair<Key, Row*>::first);
    return found == _rows.end() ? nullptr : found->second;
  }

  QVBoxLayout* _layout;
  std::vector<std::pair<Key, Row*>> _rows;
};

}  // namespace tidemar
