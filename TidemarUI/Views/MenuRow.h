#pragma once

#include <QPushButton>

#include "TidemarUI/Views/RowPainting.h"

namespace tidemar {

/// A row that acts like an entry of a menu: highlighted under the pointer, while it has the focus
/// and while it is pressed. Its highlight fills the widget; its texts stand `style::rowOutset`
/// further in.
class MenuRow : public QPushButton {
 public:
  explicit MenuRow(QWidget* parent = nullptr);

  /// Draws anew only what differs.
  void setContent(RowContent content);
  const RowContent& content() const noexcept { return _content; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  RowContent _content;
};

}  // namespace tidemar
