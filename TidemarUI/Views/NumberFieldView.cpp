#include "TidemarUI/Views/NumberFieldView.h"

#include <QAccessible>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QStyleOptionSpinBox>
#include <algorithm>
#include <chrono>
#include <utility>

#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

NumberFieldView::NumberFieldView(Formats formats, QWidget* parent)
    : QAbstractSpinBox(parent), _formats(std::move(formats)) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setAlignment(Qt::AlignRight);
  setFocusPolicy(Qt::StrongFocus);
  connect(lineEdit(), &QLineEdit::textEdited, this, [this] {
    _stepPause.stop();
    beginEdit();
  });
  _stepPause.setSingleShot(true);
  _stepPause.setInterval(std::chrono::milliseconds(400));
  connect(&_stepPause, &QTimer::timeout, this, &NumberFieldView::finishEdit);
}

void NumberFieldView::show(const NumberField& field) {
  _field = field;
  // Before the focus goes: leaving the field would hand the edit out and switch the rule on again.
  if (!field.isEnabled) cancelEdit();
  setEnabled(field.isEnabled);
  if (!isEdited()) showValue(field.value);
}

void NumberFieldView::finishEdit() {
  const auto typed = typedValue();
  const bool isChange = typed && typed != _valueBefore;
  // What is edited next starts from the new number, whenever it comes back as the stored one.
  if (isChange) _field.value = std::clamp(*typed, _field.lowerBound, _field.upperBound);
  cancelEdit();
  if (isChange) callClosure(onChange, _field.value);
}

void NumberFieldView::setValue(qint64 value) {
  if (!isEnabled()) return;
  beginEdit();
  showValue(std::clamp<std::int64_t>(value, _field.lowerBound, _field.upperBound));
  _stepPause.start();
}

void NumberFieldView::stepBy(int steps) {
  setValue(editedValue() + steps);
  selectAll();
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
  if (event->reason() != Qt::PopupFocusReason) finishEditSoon();
}

void NumberFieldView::hideEvent(QHideEvent* event) {
  QAbstractSpinBox::hideEvent(event);
  finishEditSoon();
}

void NumberFieldView::wheelEvent(QWheelEvent* event) {
  // Scrolling the page must not change a rule in passing.
  event->ignore();
}

void NumberFieldView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    const QPointer<NumberFieldView> self(this);
    finishEdit();
    if (self) selectAll();
    return;
  }
  if (event->key() == Qt::Key_Escape && isEdited()) {
    cancelEdit();
    selectAll();
    return;
  }
  QAbstractSpinBox::keyPressEvent(event);
}

/// The number that stands in the field; none while nothing is edited or where no number stands.
std::optional<std::int64_t> NumberFieldView::typedValue() const {
  return isEdited() ? _formats.integer(text().toStdString()) : std::nullopt;
}

std::int64_t NumberFieldView::editedValue() const {
  const auto typed = typedValue();
  return typed ? std::clamp(*typed, _field.lowerBound, _field.upperBound) : _field.value;
}

void NumberFieldView::showValue(std::int64_t value) {
  const QString shown = textOf(_formats.integerText(value));
  if (lineEdit()->text() == shown) return;
  lineEdit()->setText(shown);
  QAccessibleValueChangeEvent event(this, static_cast<qint64>(value));
  QAccessible::updateAccessibility(&event);
}

void NumberFieldView::beginEdit() {
  if (!isEdited()) _valueBefore = _field.value;
}

/// For where the toolkit is in the midst of moving the focus, or of hiding or destroying the
/// window: in the last case nobody is there any more to take the edit.
void NumberFieldView::finishEditSoon() {
  if (isEdited())
    QMetaObject::invokeMethod(this, &NumberFieldView::finishEdit, Qt::QueuedConnection);
}

void NumberFieldView::cancelEdit() {
  _stepPause.stop();
  _valueBefore.reset();
  showValue(_field.value);
}

}  // namespace tidemar
