#include "TidemarUI/Views/Switch.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>

#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr int trackWidth = 38;
constexpr int trackHeight = 22;
constexpr int ringMargin = 3;
constexpr int knobInset = 2;

}  // namespace

RequestingCheckBox::RequestingCheckBox(const QString& text, QWidget* parent)
    : QCheckBox(text, parent) {
  // A screen reader toggles a check box without the way that a click takes.
  connect(this, &QCheckBox::toggled, this, [this](bool isOn) {
    if (isOn == _shown) return;
    setChecked(_shown);
    QMetaObject::invokeMethod(
        this, [this, isOn] { callClosure(onToggle, isOn); }, Qt::QueuedConnection);
  });
}

void RequestingCheckBox::show(bool isOn) {
  _shown = isOn;
  setChecked(isOn);
}

void RequestingCheckBox::nextCheckState() {
  callClosure(onToggle, !isChecked());
}

void RequestingCheckBox::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    click();
    return;
  }
  QCheckBox::keyPressEvent(event);
}

Switch::Switch(QWidget* parent) : RequestingCheckBox(parent) {
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  connect(this, &QCheckBox::toggled, this, [this](bool isOn) { followState(isOn); });
  connect(&_slide, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
    _position = value.toDouble();
    update();
  });
}

QSize Switch::sizeHint() const {
  return {style::scaled(trackWidth + 2 * ringMargin), style::scaled(trackHeight + 2 * ringMargin)};
}

void Switch::followState(bool isOn) {
  const double end = isOn ? 1 : 0;
  const int duration =
      QWidget::style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this);
  _slide.stop();
  if (!isVisible() || duration <= 0) {
    _position = end;
    update();
    return;
  }
  _slide.setStartValue(_position);
  _slide.setEndValue(end);
  _slide.setDuration(duration);
  _slide.setEasingCurve(QEasingCurve::OutCubic);
  _slide.start();
}

void Switch::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  // Less faded than other controls: what it stands on has to be seen.
  if (!isEnabled()) painter.setOpacity(0.6);

  const double scale = static_cast<double>(width()) / (trackWidth + 2 * ringMargin);
  painter.scale(scale, scale);
  const QRectF track(ringMargin, (height() / scale - trackHeight) / 2, trackWidth, trackHeight);
  constexpr double radius = trackHeight / 2.0;
  painter.setPen(Qt::NoPen);
  painter.setBrush(style::mixed(style::switchFill(palette()), style::accent(palette()), _position));
  painter.drawRoundedRect(track, radius, radius);
  if (isDown() || (underMouse() && isEnabled())) {
    painter.setBrush(style::highlightFill(palette()));
    painter.drawRoundedRect(track, radius, radius);
  }
  if (hasFocus() && window()->testAttribute(Qt::WA_KeyboardFocusChange)) {
    painter.setPen(QPen(style::accent(palette()), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(track.adjusted(-2, -2, 2, 2), radius + 2, radius + 2);
  }

  const double travel = trackWidth - trackHeight;
  const double way = layoutDirection() == Qt::RightToLeft ? 1 - _position : _position;
  const QRectF knob(track.left() + knobInset + way * travel, track.top() + knobInset,
                    trackHeight - 2 * knobInset, trackHeight - 2 * knobInset);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QColor(0, 0, 0, 60));
  painter.drawEllipse(knob.adjusted(-0.5, 0, 0.5, 1));
  // White wouldn't be seen on a bright accent, as schemes with a high contrast have it.
  constexpr int bright = 180;
  const bool isSeen = qGray(style::accent(palette()).rgb()) < bright;
  painter.setBrush(isSeen ? Qt::white
                          : style::mixed(Qt::white, style::onAccent(palette()), _position));
  painter.drawEllipse(knob);
}

}  // namespace tidemar
