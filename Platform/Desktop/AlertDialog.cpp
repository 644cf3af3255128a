#include "Platform/Desktop/AlertDialog.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextEdit>
#include <algorithm>
#include <cmath>
#include <memory>

namespace tidemar {
namespace {

QTextCharFormat weighing(QFont::Weight weight) {
  QTextCharFormat format;
  format.setFontWeight(weight);
  return format;
}

void write(QTextEdit& text, const QString& message, const QString& information) {
  QTextCursor cursor(text.document());
  cursor.insertText(message, weighing(QFont::Bold));
  if (information.isEmpty()) return;
  QTextBlockFormat below;
  below.setTopMargin(text.fontMetrics().lineSpacing() / 2.0);
  cursor.insertBlock(below, weighing(QFont::Normal));
  // Lines within the block, which has its margin once.
  cursor.insertText(QString(information).replace(u'\n', QChar::LineSeparator));
}

}  // namespace

AlertDialog::AlertDialog(const Alerts::Alert& alert, QWidget* parent) : QDialog(parent) {
  const QString message = QString::fromStdString(alert.message);
  const QString information = QString::fromStdString(alert.information);
  setWindowTitle(QStringLiteral("Tidemar"));
  setAccessibleDescription(message + u'\n' + information);
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
  if (parent == nullptr) setWindowFlag(Qt::WindowStaysOnTopHint);

  const bool isCritical = alert.style == Alerts::Style::critical;
  const QIcon symbol = style()->standardIcon(
      isCritical ? QStyle::SP_MessageBoxCritical : QStyle::SP_MessageBoxWarning, nullptr, this);
  const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
  auto* icon = new QLabel(this);
  icon->setPixmap(symbol.pixmap(QSize(iconSize, iconSize), devicePixelRatio()));

  auto* text = new QTextEdit(this);
  text->setReadOnly(true);
  text->setAccessibleName(message);
  text->setTabChangesFocus(true);
  text->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  text->setFrameStyle(QFrame::NoFrame);
  // It looks like a label: on the window's own ground, so in the colour that goes with that.
  text->viewport()->setAutoFillBackground(false);
  QPalette palette = text->palette();
  palette.setColor(QPalette::Text, palette.color(QPalette::WindowText));
  text->setPalette(palette);
  text->document()->setDocumentMargin(0);
  write(*text, message, information);
  fitText(*text);

  auto* buttons = new QDialogButtonBox(this);
  QPushButton* button =
      buttons->addButton(QString::fromStdString(alert.button), QDialogButtonBox::AcceptRole);
  button->setDefault(true);
  button->setFocus();
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

  auto* layout = new QGridLayout(this);
  layout->addWidget(icon, 0, 0, Qt::AlignTop);
  layout->addWidget(text, 0, 1);
  layout->addWidget(buttons, 1, 0, 1, 2);
  layout->setColumnStretch(1, 1);
  layout->setRowStretch(0, 1);
  layout->setHorizontalSpacing(2 * layout->horizontalSpacing());
  resize(layout->minimumSize());
}

void AlertDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  raise();
  activateWindow();
  QAccessibleEvent announcement(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&announcement);
}

void AlertDialog::fitText(QTextEdit& text) const {
  constexpr int charactersPerLine = 60;
  constexpr double shareOfTheScreen = 0.6;
  const QSize screenSize = screen()->availableSize();
  const int width = std::min(charactersPerLine * text.fontMetrics().averageCharWidth(),
                             static_cast<int>(shareOfTheScreen * screenSize.width()));
  // On a copy: the widget lays its own document out in the width that it has by now.
  const std::unique_ptr<QTextDocument> document(text.document()->clone());
  document->setTextWidth(width);
  const int height = static_cast<int>(std::ceil(document->size().height()));
  const int mostHeight = static_cast<int>(shareOfTheScreen * screenSize.height());
  const int scrollBar =
      height > mostHeight ? text.style()->pixelMetric(QStyle::PM_ScrollBarExtent) : 0;
  text.setMinimumSize(width + scrollBar, std::min(height, mostHeight));
}

}  // namespace tidemar
