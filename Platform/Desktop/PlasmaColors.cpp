#include "Platform/Desktop/PlasmaColors.h"

#include <QColor>
#include <QString>
#include <QStringList>
#include <string>

#include "Platform/Desktop/CurrentDesktop.h"
#include "Platform/Desktop/KeyFile.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"

namespace tidemar::PlasmaColors {
namespace {

/// A colour of one of the settings' groups, as "red,green,blue"; invalid where there is none.
QColor color(std::string_view settings, const char* group, std::string_view key) {
  const std::string_view value = KeyFile::value(settings, std::string("Colors:") + group, key);
  const QStringList parts =
      QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size())).split(u',');
  return parts.size() < 3 ? QColor() : QColor(parts[0].toInt(), parts[1].toInt(), parts[2].toInt());
}

std::optional<std::string> settings() {
  try {
    return WholeFile::read(
        StandardDirectories::configuration().appendingPathComponent("kdeglobals"));
  } catch (const PlatformError&) {
    return std::nullopt;  // the toolkit couldn't read it either
  }
}

}  // namespace

std::optional<QPalette> palette() {
  if (!CurrentDesktop::is(QStringLiteral("KDE"))) return std::nullopt;
  const std::optional<std::string> text = settings();
  if (!text) return std::nullopt;
  const auto ground = [&](const char* group) { return color(*text, group, "BackgroundNormal"); };
  const auto ink = [&](const char* group) { return color(*text, group, "ForegroundNormal"); };

  QPalette palette(ground("Button"), ground("Window"));
  for (const auto& [role, chosen] :
       {std::pair(QPalette::WindowText, ink("Window")), std::pair(QPalette::Base, ground("View")),
        std::pair(QPalette::Text, ink("View")), std::pair(QPalette::ButtonText, ink("Button")),
        std::pair(QPalette::Highlight, ground("Selection")),
        std::pair(QPalette::HighlightedText, ink("Selection")),
        std::pair(QPalette::ToolTipBase, ground("Tooltip")),
        std::pair(QPalette::ToolTipText, ink("Tooltip"))}) {
    if (!chosen.isValid()) return std::nullopt;
    palette.setColor(role, chosen);
  }
  return palette;
}

}  // namespace tidemar::PlasmaColors
