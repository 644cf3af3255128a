#pragma once

#include <QPalette>
#include <QProxyStyle>
#include <optional>

namespace tidemar {

/// Fusion's controls drawn flat, in the colours and corners of `style`: push buttons, check boxes,
/// number fields, pickers, scroll bars. For desktops that bring no style of their own.
class QuietStyle : public QProxyStyle {
 public:
  QuietStyle();

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                          QPainter* painter, const QWidget* widget) const override;
  void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette,
                    bool isEnabled, const QString& text, QPalette::ColorRole role) const override;
  QRect subElementRect(SubElement element, const QStyleOption* option,
                       const QWidget* widget) const override;
  QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                       SubControl subControl, const QWidget* widget) const override;
  QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                         const QWidget* widget) const override;
  QIcon standardIcon(StandardPixmap pixmap, const QStyleOption* option,
                     const QWidget* widget) const override;
  void polish(QWidget* widget) override;

  /// The ground of a window keeps its colour while another one has the focus, as all that is drawn
  /// on it does.
  void polish(QPalette& palette) override;
  using QProxyStyle::polish;
  int pixelMetric(PixelMetric metric, const QStyleOption* option,
                  const QWidget* widget) const override;
};

/// Gives the application that style where the desktop left it with Fusion, or with a style that
/// draws as Fusion does. Call it once, after the application exists.
void adoptQuietStyle();

/// The palettes that go with that style.
QPalette quietPalette(bool isDark);

enum class ColorScheme { asGiven, light, dark };

/// Shows the application in a light or a dark palette where it has that style: the desktop's own
/// palette where that is of this kind, else the style's. `desktops` is the desktop's palette where
/// it is another by now than at the start. Can be called again at any time.
void adoptColorScheme(ColorScheme scheme, const std::optional<QPalette>& desktops = {});

}  // namespace tidemar
