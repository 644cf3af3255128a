#include "TidemarUI/Views/Card.h"

#include <QPainter>

#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr int rowHeight = 44;
constexpr int rowPadding = 14;

}  // namespace

Card::Card(QWidget* parent) : QWidget(parent), _rows(new QVBoxLayout(this)) {
  _rows->setContentsMargins(1, 1, 1, 1);
  _rows->setSpacing(1);
}

void Card::addRow(QWidget* row) {
  _rows->addWidget(row);
}

void Card::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(style::hairline(palette()));
  painter.setBrush(style::cardFill(palette()));
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), style::cardCorner,
                          style::cardCorner);

  painter.setRenderHint(QPainter::Antialiasing, false);
  bool isFirst = true;
  for (int index = 0; index < _rows->count(); ++index) {
    const QWidget* row = _rows->itemAt(index)->widget();
    if (row == nullptr || row->isHidden()) continue;
    if (!isFirst) {
      painter.fillRect(QRect(1, row->geometry().top() - 1, width() - 2, 1),
                       style::mixed(style::cardFill(palette()), style::text(palette()), 0.1));
    }
    isFirst = false;
  }
}

FormRow::FormRow(QWidget* parent) : QWidget(parent), _line(new QHBoxLayout(this)) {
  _line->setContentsMargins(rowPadding, 2 * style::grid, rowPadding, 2 * style::grid);
  _line->setSpacing(3 * style::grid);
  setMinimumHeight(rowHeight);
}

FormSection::FormSection(std::string_view heading, QWidget* parent)
    : QWidget(parent),
      _card(new Card),
      _footer(new TextLabel(style::TextSize::secondary, QFont::Normal, TextLabel::Tone::secondary,
                            TextLabel::Overflow::wrap)) {
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  if (!heading.empty()) {
    auto* title = new TextLabel(style::TextSize::body, QFont::DemiBold, TextLabel::Tone::primary,
                                TextLabel::Overflow::wrap);
    title->show(heading);
    title->setContentsMargins(2, 0, 2, 6);
    column->addWidget(title);
  }
  column->addWidget(_card);
  _footer->setContentsMargins(2, 6, 2, 0);
  _footer->hide();
  column->addWidget(_footer);
}

void FormSection::setFooter(std::string_view text, TextLabel::Tone tone) {
  _footer->setTone(tone);
  _footer->show(text);
  _footer->setVisible(!text.empty());
}

}  // namespace tidemar
