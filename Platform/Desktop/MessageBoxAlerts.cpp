#include "Platform/Desktop/MessageBoxAlerts.h"

#include <QApplication>
#include <QMessageBox>

namespace tidemar {

void MessageBoxAlerts::run(const Alert& alert) {
  QMessageBox box(QApplication::activeWindow());
  box.setIcon(alert.style == Style::critical ? QMessageBox::Critical : QMessageBox::Warning);
  box.setWindowTitle(QStringLiteral("Tidemar"));
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(alert.message));
  box.setInformativeText(QString::fromStdString(alert.information));
  box.addButton(QString::fromStdString(alert.button), QMessageBox::AcceptRole);
  box.exec();
}

}  // namespace tidemar
