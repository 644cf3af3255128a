#pragma once

#include <QAbstractSpinBox>
#include <QTimer>
#include <cstdint>
#include <functional>

#include "Platform/Locale/Formats.h"
#include "TidemarUI/State/SettingsEdits.h"

namespace tidemar {

/// A text box for a whole number with a stepper, in the digits of the user's locale. What is typed
/// is handed out once it is finished: by Return, by leaving the field, or a moment after the last
/// step. Until then a refresh leaves it alone.
class NumberFieldView : public QAbstractSpinBox {
 public:
  explicit NumberFieldView(Formats formats, QWidget* parent = nullptr);

  /// An edit, brought within the bounds.
  std::function<void(std::int64_t)> onChange;

  void show(const NumberField& field);

  /// Hands out what is being edited, if anything is.
  void finishEdit();

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
  std::int64_t editedValue() const;
  void showValue(std::int64_t value);

  Formats _formats;
  NumberField _field;
  bool _isEdited = false;
  QTimer _stepPause;
};

}  // namespace tidemar
