#include "TidemarUI/Views/TextLabel.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>

namespace tidemar {

TextLabel::TextLabel(style::TextSize size, QFont::Weight weight, Tone tone, Overflow overflow,
                     QWidget* parent)
    : QLabel(parent), _size(size), _weight(weight), _tone(tone), _overflow(overflow) {
  setTextFormat(Qt::PlainText);
  setFont(style::font(size, weight));
  if (overflow == Overflow::wrap) {
    setWordWrap(true);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
  } else {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  }
}

void TextLabel::show(std::string_view text) {
  const QString shown = textOf(text);
  if (shown == this->text()) return;
  setText(shown);
  updateToolTip();
}

void TextLabel::setTone(Tone tone) {
  if (tone == _tone) return;
  _tone = tone;
  update();
}

QSize TextLabel::minimumSizeHint() const {
  if (_overflow == Overflow::wrap) return QLabel::minimumSizeHint();
  return {fontMetrics().averageCharWidth() * 6, fontMetrics().height()};
}

void TextLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  if (!isEnabled()) painter.setOpacity(style::disabledOpacity);
  switch (_tone) {
    case Tone::primary:
      painter.setPen(style::text(palette()));
      break;
    case Tone::secondary:
      painter.setPen(style::secondaryText(palette()));
      break;
    case Tone::warning:
      painter.setPen(style::warning(palette()));
      break;
  }
  // Where the text stands follows the screen; how it runs, its own language.
  painter.setLayoutDirection(Qt::LayoutDirectionAuto);
  const int place = QStyle::visualAlignment(layoutDirection(), alignment());
  const int flags = place | (_overflow == Overflow::wrap ? Qt::TextWordWrap : Qt::TextSingleLine);
  painter.drawText(contentsRect(), flags, _overflow == Overflow::wrap ? text() : elidedText());
}

void TextLabel::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange) setFont(style::font(_size, _weight));
  QLabel::changeEvent(event);
}

void TextLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  updateToolTip();
}

QString TextLabel::elidedText() const {
  return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

void TextLabel::updateToolTip() {
  if (_overflow != Overflow::elideInMiddle) return;
  setToolTip(elidedText() == text() ? QString() : plainToolTip(text()));
}

TextLabel* makeBlockTitle(std::string_view text, QWidget* parent) {
  auto* label =
      new TextLabel(style::TextSize::secondary, QFont::DemiBold, TextLabel::Tone::secondary,
                    TextLabel::Overflow::elideInMiddle, parent);
  label->setContentsMargins(style::rowOutset, 0, style::rowOutset, 0);
  label->show(text);
  return label;
}

QString plainToolTip(const QString& text) {
  return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

QString textOf(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace tidemar
