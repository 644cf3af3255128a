#pragma once

#include <QScrollArea>
#include <QVBoxLayout>

namespace tidemar {

/// A column that scrolls where it is higher than its place. It keeps its place when what stands in
/// it changes, and follows the focus.
class ScrollColumn : public QScrollArea {
 public:
  /// Content wider than `maximumWidth` stays that wide and stands in the middle.
  explicit ScrollColumn(int maximumWidth, QWidget* parent = nullptr);

  QVBoxLayout& column() noexcept { return *_column; }
  void scrollToTop();

  /// The height at which nothing scrolls, by what stands in the column now.
  int measureHeight(int width) const;

 private:
  QVBoxLayout* _column;
};

}  // namespace tidemar
