#include "TidemarUI/Views/Icons.h"

#include <QGuiApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QStandardPaths>
#include <array>
#include <cstdlib>
#include <optional>
#include <span>
#include <utility>

#include "TidemarUI/Views/Style.h"

// A static library's resources are there only once they are asked for, which has to be done outside
// of any namespace.
static void loadTidemarIcons() {
  Q_INIT_RESOURCE(icons);
}

namespace tidemar::icons {
namespace {

/// One icon for each drawing: every other one would be rendered anew and kept in the toolkit's
/// cache of pictures beside the first, as the toolkit's own icons of a theme are not.
QIcon shipped(const QString& name) {
  static QHash<QString, QIcon> icons;
  QIcon& icon = icons[name];
  if (icon.isNull()) {
    loadTidemarIcons();
    icon = QIcon(QStringLiteral(":/tidemar/%1.svg").arg(name));
  }
  return icon;
}

QIcon themed(const QString& themeName, const QString& shippedName) {
  return QIcon::hasThemeIcon(themeName) ? QIcon::fromTheme(themeName) : shipped(shippedName);
}

/// Whether a picture is a drawing in one colour, its soft edges not looked at.
bool isOneColoured(const QPixmap& picture) {
  constexpr int opaque = 200;
  constexpr int tolerance = 16;
  const QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
  std::optional<QRgb> first;
  for (int y = 0; y < image.height(); ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (const QRgb pixel : std::span(line, static_cast<std::size_t>(image.width()))) {
      if (qAlpha(pixel) < opaque) continue;
      if (!first) first = pixel;
      if (std::abs(qRed(pixel) - qRed(*first)) > tolerance ||
          std::abs(qGreen(pixel) - qGreen(*first)) > tolerance ||
          std::abs(qBlue(pixel) - qBlue(*first)) > tolerance)
        return false;
    }
  }
  return first.has_value();
}

/// Whether a picture, seen from afar, has nearly that colour.
bool isMuchLike(const QPixmap& picture, const QColor& color) {
  constexpr int tolerance = 96;
  const QColor mean = picture.toImage()
                          .convertToFormat(QImage::Format_ARGB32_Premultiplied)
                          .scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                          .pixelColor(0, 0);
  return std::abs(mean.red() - color.red()) < tolerance &&
         std::abs(mean.green() - color.green()) < tolerance &&
         std::abs(mean.blue() - color.blue()) < tolerance;
}

/// Takes the shape of a picture and fills it with one colour.
class SymbolEngine : public QIconEngine {
 public:
  /// `themeName` is the name by which others find the picture; empty where they don't.
  SymbolEngine(QIcon shape, QColor color, QString themeName = {})
      : _shape(std::move(shape)), _color(color), _themeName(std::move(themeName)) {}

  QIconEngine* clone() const override { return new SymbolEngine(*this); }

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    painter->drawPixmap(
        rect, scaledPixmap(rect.size(), mode, QIcon::Off, painter->device()->devicePixelRatio()));
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return scaledPixmap(size, mode, state, 1);
  }

  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override {
    QPixmap filled = _shape.pixmap(size, scale);
    if (!isToBeFilled(filled, mode)) return filled;
    QPainter painter(&filled);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(filled.rect(), color(mode));
    return filled;
  }

  QString iconName() override { return _themeName; }
  bool isNull() override { return _shape.isNull(); }

  virtual bool isToBeFilled(const QPixmap&, QIcon::Mode) const { return true; }

 private:
  QColor color(QIcon::Mode mode) const {
    if (_color.isValid()) return _color;
    const QPalette palette = QGuiApplication::palette();
    if (mode == QIcon::Selected) return style::onAccent(palette);
    QColor color = style::text(palette);
    if (mode == QIcon::Disabled) color.setAlphaF(static_cast<float>(style::disabledOpacity));
    return color;
  }

  QIcon _shape;
  QColor _color;  ///< Invalid to follow the palette.
  QString _themeName;
};

/// A picture in its own colours. Some themes draw small ones in one colour, meant to be filled by
/// whoever shows them: as they are, they vanish on a dark ground and on a selected row. There a
/// blue folder vanishes on blue, too.
class PictureEngine : public SymbolEngine {
 public:
  explicit PictureEngine(QIcon picture) : SymbolEngine(std::move(picture), {}) {}

  QIconEngine* clone() const override { return new PictureEngine(*this); }
  bool isToBeFilled(const QPixmap& picture, QIcon::Mode mode) const override {
    return isOneColoured(picture) ||
           (mode == QIcon::Selected &&
            isMuchLike(picture, style::accent(QGuiApplication::palette())));
  }
};

QColor menuBarColor(Ground ground) {
  switch (ground) {
    case Ground::light:
      return {0x2b, 0x2e, 0x33};
    case Ground::dark:
      return {0xf0, 0xf2, 0xf4};
    case Ground::unknown:
      break;
  }
  // It has a contrast of 4 to 1 to white and to a nearly black ground alike.
  return {0x7d, 0x7d, 0x7d};
}

}  // namespace

QIcon symbol(Symbol symbol) {
  const auto names = [symbol]() -> std::pair<const char*, const char*> {
    switch (symbol) {
      case Symbol::calendar:
        return {"x-office-calendar-symbolic", "calendar"};
      case Symbol::plus:
        return {"list-add-symbolic", "plus"};
      case Symbol::minus:
        return {"list-remove-symbolic", "minus"};
      case Symbol::menu:
        return {"open-menu-symbolic", "menu"};
      case Symbol::warning:
        return {"dialog-warning-symbolic", "warning"};
    }
    return {};
  }();
  const QIcon shape = themed(QString::fromLatin1(names.first), QString::fromLatin1(names.second));
  return QIcon(new SymbolEngine(shape, {}));
}

QIcon folder(const std::string& path) {
  using Place = QStandardPaths::StandardLocation;
  static const std::array places = {
      std::pair(Place::DownloadLocation, "folder-download"),
      std::pair(Place::DocumentsLocation, "folder-documents"),
      std::pair(Place::PicturesLocation, "folder-pictures"),
      std::pair(Place::MusicLocation, "folder-music"),
      std::pair(Place::MoviesLocation, "folder-videos"),
      std::pair(Place::DesktopLocation, "user-desktop"),
      std::pair(Place::HomeLocation, "user-home"),
  };
  for (const auto& [place, name] : places) {
    const QString themeName = QString::fromLatin1(name);
    if (path == QStandardPaths::writableLocation(place).toStdString() &&
        QIcon::hasThemeIcon(themeName))
      return QIcon(new PictureEngine(QIcon::fromTheme(themeName)));
  }
  return QIcon(new PictureEngine(themed(QStringLiteral("folder"), QStringLiteral("folder"))));
}

QIcon application() {
  return themed(QStringLiteral("app.quernly.tidemar"), QStringLiteral("app.quernly.tidemar"));
}

QIcon menuBar(Ground ground) {
  // A host that gets the name colours the picture to suit its panel.
  const QString name = QStringLiteral("app.quernly.tidemar-symbolic");
  // Looked for where it is installed: to ask the toolkit for it reads all of the icon themes.
  const bool isInstalled =
      !QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                              QStringLiteral("icons/hicolor/symbolic/apps/%1.svg").arg(name))
           .isEmpty();
  return QIcon(new SymbolEngine(shipped(QStringLiteral("MenuBarIcon")), menuBarColor(ground),
                                isInstalled ? name : QString()));
}

}  // namespace tidemar::icons
