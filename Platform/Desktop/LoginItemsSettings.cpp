#include "Platform/Desktop/LoginItemsSettings.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

#include "Platform/Desktop/CurrentDesktop.h"

namespace tidemar::LoginItemsSettings {
namespace {

struct Page {
  const char* desktop;  ///< As it stands in XDG_CURRENT_DESKTOP.
  const char* program;
  const char* argument;
};

constexpr Page pages[] = {
    {"KDE", "systemsettings", "kcm_autostart"},   {"KDE", "systemsettings5", "kcm_autostart"},
    {"GNOME", "gnome-tweaks", nullptr},           {"XFCE", "xfce4-session-settings", nullptr},
    {"MATE", "mate-session-properties", nullptr}, {"X-Cinnamon", "cinnamon-settings", "startup"},
    {"LXQt", "lxqt-config-session", nullptr},
};

bool open(const Page& page) {
  const QString program = QStandardPaths::findExecutable(QString::fromLatin1(page.program));
  if (program.isEmpty()) return false;
  QStringList arguments;
  if (page.argument != nullptr) arguments += QString::fromLatin1(page.argument);
  return QProcess::startDetached(program, arguments);
}

}  // namespace

void open() {
  for (const Page& page : pages) {
    if (CurrentDesktop::is(QString::fromLatin1(page.desktop)) && open(page)) return;
  }
  const QString configuration =
      QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  QDesktopServices::openUrl(QUrl::fromLocalFile(configuration + QStringLiteral("/autostart")));
}

}  // namespace tidemar::LoginItemsSettings
