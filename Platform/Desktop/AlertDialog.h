#pragma once

#include <QDialog>

#include "Platform/Desktop/Alerts.h"

class QTextEdit;

namespace tidemar {

/// The window of one alert: an icon, the message in bold, what follows below it, and one button,
/// which Enter and Escape press too. The texts are plain; they break anywhere, so that the longest
/// file name fits, and scroll where there are more lines than the screen has room for.
class AlertDialog : public QDialog {
 public:
  /// Without a parent it stays in front of all windows.
  AlertDialog(const Alerts::Alert& alert, QWidget* parent);

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void fitText(QTextEdit& text) const;
};

}  // namespace tidemar
