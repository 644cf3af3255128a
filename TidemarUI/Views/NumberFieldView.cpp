#include "TidemarUI/Views/NumberFieldView.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QStyleOptionSpinBox>
#include <algorithm>
#include <chrono>
#include <utility>

#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

NumberFieldView::NumberFieldView(Formats formats, QWidget* parent)
    : QAbstractSpinBox(parent), _formats(std::move(formats)) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setAlignment(Qt::AlignRight);
  setFocusPolicy(Qt::StrongFocus);
  connect(lineEdit(), &QLineEdit::textEdited, this, [this] {
    _stepPause.stop();
    _isEdited = true;
  });
  _stepPause.setSingleShot(true);
  _stepPause.setInterval(std::chrono::milliseconds(400));
  connect(&_stepPause, &QTimer::timeout, this, &NumberFieldView::finishEdit);
}

void NumberFieldView::show(const NumberField& field) {
  _field = field;
  setEnabled(field.isEnabled);
  if (!_isEdited) showValue(field.value);
}

void NumberFieldView::finishEdit() {
  _stepPause.stop();
  if (!_isEdited) return;
  const std::int64_t value = editedValue();
  _isEdited = false;
  showValue(value);
  if (onChange) onChange(value);
}

void NumberFieldView::stepBy(int steps) {
  const std::int64_t value =
      std::clamp(editedValue() + steps, _field.lowerBound, _field.upperBound);
  showValue(value);
  selectAll();
  _isEdited = true;
  _stepPause.start();
}

QValidator::State NumberFieldView::validate(QString& text, int&) const {
  // Anything can be typed; what is no number leaves the value as it was.
  return _formats.integer(text.toStdString()) ? QValidator::Acceptable : QValidator::Intermediate;
}

QSize NumberFieldView::sizeHint() const {
  QStyleOptionSpinBox option;
  initStyleOption(&option);
  const int width = fontMetrics().horizontalAdvance(textOf(_formats.integerText(1'000'000)));
  const QSize content(width + 8, fontMetrics().height());
  return style()->sizeFromContents(QStyle::CT_SpinBox, &option, content, this);
}

QAbstractSpinBox::StepEnabled NumberFieldView::stepEnabled() const {
  const std::int64_t value = editedValue();
  StepEnabled enabled = StepNone;
  if (value < _field.upperBound) enabled |= StepUpEnabled;
  if (value > _field.lowerBound) enabled |= StepDownEnabled;
  return enabled;
}

void NumberFieldView::focusOutEvent(QFocusEvent* event) {
  QAbstractSpinBox::focusOutEvent(event);
  if (event->reason() != Qt::PopupFocusReason) finishEdit();
}

void NumberFieldView::hideEvent(QHideEvent* event) {
  QAbstractSpinBox::hideEvent(event);
  finishEdit();
}

void NumberFieldView::wheelEvent(QWheelEvent* event) {
  // Scrolling the page must not change a rule in passing.
  event->ignore();
}

void NumberFieldView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    finishEdit();
    selectAll();
    return;
  }
  if (event->key() == Qt::Key_Escape && _isEdited) {
    _stepPause.stop();
    _isEdited = false;
    showValue(_field.value);
    selectAll();
    return;
  }
  QAbstractSpinBox::keyPressEvent(event);
}

std::int64_t NumberFieldView::editedValue() const {
  if (!_isEdited) return _field.value;
  const std::int64_t typed = _formats.integer(text().toStdString()).value_or(_field.value);
  return std::clamp(typed, _field.lowerBound, _field.upperBound);
}

void NumberFieldView::showValue(std::int64_t value) {
  const QString shown = textOf(_formats.integerText(value));
  if (lineEdit()->text() != shown) lineEdit()->setText(shown);
}

}  // namespace tidemar
