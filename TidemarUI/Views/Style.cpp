#include "TidemarUI/Views/Style.h"

#include <QApplication>
#include <QFontInfo>
#include <algorithm>

namespace tidemar::style {
namespace {

double scale(TextSize size) {
  constexpr double base = 13;
  switch (size) {
    case TextSize::pageHeadline:
      return 21 / base;
    case TextSize::folderName:
      return 18 / base;
    case TextSize::sectionHeadline:
      return 15 / base;
    case TextSize::body:
      return 1;
    case TextSize::secondary:
      return 11.5 / base;
  }
  return 1;
}

QColor color(const QPalette& palette, QPalette::ColorRole role) {
  // What can't be used is faded as a whole, not by colours of its own.
  return palette.color(QPalette::Active, role);
}

QColor translucent(QColor color, double opacity) {
  color.setAlphaF(static_cast<float>(opacity));
  return color;
}

}  // namespace

QFont font(TextSize size, QFont::Weight weight) {
  QFont font = QApplication::font();
  if (font.pixelSize() > 0) {
    font.setPixelSize(qRound(font.pixelSize() * scale(size)));
  } else {
    font.setPointSizeF(font.pointSizeF() * scale(size));
  }
  font.setWeight(weight);
  return font;
}

int scaled(int length) {
  constexpr double usualSize = 40.0 / 3;  // 10 points in pixels
  const double size = QFontInfo(QApplication::font()).pixelSize();
  return qRound(length * std::max(1.0, size / usualSize));
}

QColor mixed(const QColor& from, const QColor& to, double share) {
  const auto part = [share](int a, int b) { return qRound(a + (b - a) * share); };
  return {part(from.red(), to.red()), part(from.green(), to.green()), part(from.blue(), to.blue())};
}

bool isDark(const QPalette& palette) {
  return color(palette, QPalette::WindowText).lightness() >
         color(palette, QPalette::Window).lightness();
}

QColor text(const QPalette& palette) {
  return color(palette, QPalette::WindowText);
}

QColor secondaryText(const QPalette& palette) {
  return mixed(text(palette), windowFill(palette), 0.36);
}

QColor accent(const QPalette& palette) {
  return color(palette, QPalette::Highlight);
}

QColor onAccent(const QPalette& palette) {
  return color(palette, QPalette::HighlightedText);
}

QColor warning(const QPalette& palette) {
  return isDark(palette) ? QColor(0xff, 0x6f, 0x66) : QColor(0xc6, 0x2f, 0x2f);
}

QColor windowFill(const QPalette& palette) {
  return color(palette, QPalette::Window);
}

QColor sidebarFill(const QPalette& palette) {
  return isDark(palette) ? mixed(windowFill(palette), Qt::black, 0.14)
                         : mixed(windowFill(palette), text(palette), 0.045);
}

QColor cardFill(const QPalette& palette) {
  return isDark(palette) ? mixed(windowFill(palette), text(palette), 0.045)
                         : color(palette, QPalette::Base);
}

QColor fieldFill(const QPalette& palette) {
  return isDark(palette) ? windowFill(palette) : color(palette, QPalette::Base);
}

QColor hairline(const QPalette& palette) {
  return mixed(windowFill(palette), text(palette), 0.12);
}

QColor highlightFill(const QPalette& palette) {
  return translucent(text(palette), isDark(palette) ? 0.08 : 0.06);
}

QColor pressedFill(const QPalette& palette) {
  return translucent(text(palette), isDark(palette) ? 0.14 : 0.11);
}

QColor switchFill(const QPalette& palette) {
  // Seen on a card, which may be darker than the window.
  return mixed(cardFill(palette), text(palette), 0.22);
}

}  // namespace tidemar::style
