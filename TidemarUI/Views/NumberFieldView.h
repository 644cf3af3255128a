#pragma once

#include <QAbstractSpinBox>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <optional>

#include "Platform/Locale/Formats.h"
#include "TidemarUI/State/SettingsEdits.h"

namespace tidemar {

/// A text box for a whole number with a stepper, in the digits of the user's locale. What is typed
/// is handed out once it is finished: by Return, by leaving the field, or a moment after the last
/// step. Until then a refresh leaves it alone, unless it switches the field off: that takes the
/// edit back. A text that is no number, or the number that stood there before, changes nothing.
class NumberFieldView : public QAbstractSpinBox {
  Q_OBJECT
  // By these names assistive tools read the number and set it, which is an edit like a step.
  Q_PROPERTY(qint64 value READ value WRITE setValue)
  Q_PROPERTY(qint64 minimum READ minimum)
  Q_PROPERTY(qint64 maximum READ maximum)
  Q_PROPERTY(qint64 stepSize READ stepSize CONSTANT)

 public:
  explicit NumberFieldView(Formats formats, QWidget* parent = nullptr);

  /// An edit, brought within the bounds.
  std::function<void(std::int64_t)> onChange;

  void show(const NumberField& field);

  /// Something was typed or stepped that isn't handed out yet.
  bool isEdited() const noexcept { return _valueBefore.has_value(); }

  /// Hands out what is being edited, if anything is.
  void finishEdit();

  qint64 value() const { return editedValue(); }
  qint64 minimum() const { return _field.lowerBound; }
  qint64 maximum() const { return _field.upperBound; }
  qint64 stepSize() const { return 1; }
  void setValue(qint64 value);

  void stepBy(int steps) override;
  QValidator::State validate(QString& text, int& position) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  StepEnabled stepEnabled() const override;
  void focusOutEvent(QFocusEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  std::optional<std::int64_t> typedValue() const;
  std::int64_t editedValue() const;
  void showValue(std::int64_t value);
  void beginEdit();
  void finishEditSoon();
  void cancelEdit();

  Formats _formats;
  NumberField _field;
  std::optional<std::int64_t> _valueBefore;  ///< What stood there when the edit began.
  QTimer _stepPause;
};

}  // namespace tidemar
