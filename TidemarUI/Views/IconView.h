#pragma once

#include <QIcon>
#include <QWidget>

namespace tidemar {

/// A picture that stands beside the words for what it shows, and that assistive tools leave out. It
/// is drawn anew for other colours, another scale and another size of type.
class IconView : public QWidget {
 public:
  /// `side` is in pixels at 10 points.
  explicit IconView(int side);

  void show(const QIcon& icon);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  int _side;
  QIcon _icon;
};

}  // namespace tidemar
