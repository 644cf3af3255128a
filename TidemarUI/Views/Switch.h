#pragma once

#include <QCheckBox>
#include <QVariantAnimation>
#include <functional>

namespace tidemar {

/// A check box that shows what it was told and nothing else: using it asks for the other value by
/// `onToggle`, and only `show` changes what stands there.
class RequestingCheckBox : public QCheckBox {
 public:
  explicit RequestingCheckBox(const QString& text, QWidget* parent = nullptr);
  explicit RequestingCheckBox(QWidget* parent = nullptr) : RequestingCheckBox(QString(), parent) {}

  std::function<void(bool isOn)> onToggle;

  void show(bool isOn);

 protected:
  void nextCheckState() override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool _shown = false;
};

/// Such a check box in the shape of a switch, without a text beside it.
class Switch : public RequestingCheckBox {
 public:
  explicit Switch(QWidget* parent = nullptr);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool hitButton(const QPoint& position) const override { return rect().contains(position); }

 private:
  void followState(bool isOn);

  QVariantAnimation _slide;
  double _position = 0;  ///< Of the knob: 0 off, 1 on.
};

}  // namespace tidemar
