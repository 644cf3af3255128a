#include "Platform/Desktop/ModalAlerts.h"

#include <QApplication>
#include <QPointer>
#include <QWidget>

#include "Platform/Desktop/AlertDialog.h"

namespace tidemar {
namespace {

bool isOrdinaryWindow(const QWidget* widget) {
  if (widget == nullptr || !widget->isVisible()) return false;
  return widget->windowType() == Qt::Window || widget->windowType() == Qt::Dialog;
}

/// The window to stand over; none where the application shows none.
QWidget* windowBelow() {
  for (QWidget* window : {QApplication::activeModalWidget(), QApplication::activeWindow()}) {
    if (isOrdinaryWindow(window)) return window;
  }
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (isOrdinaryWindow(window)) return window;
  }
  return nullptr;
}

}  // namespace

void ModalAlerts::run(const Alert& alert) {
  // A window that is destroyed meanwhile takes the dialog over it along.
  const QPointer<AlertDialog> dialog = new AlertDialog(alert, windowBelow());
  dialog->exec();
  delete dialog;
}

}  // namespace tidemar
