#include "Platform/Desktop/DefaultFileManager.h"

#include <QFile>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <string>
#include <string_view>

#include "Platform/Desktop/CurrentDesktop.h"
#include "Platform/Desktop/KeyFile.h"

namespace tidemar::DefaultFileManager {
namespace {

constexpr std::string_view folderType = "inode/directory";

/// The value of a key in a group of a key file; empty where there is none.
QString valueIn(const QString& path, std::string_view group, std::string_view key) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  const std::string text = file.readAll().toStdString();
  const std::string_view value = KeyFile::value(text, group, key);
  return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size()));
}

QString valueInEntry(const QString& entry, std::string_view key) {
  return valueIn(entry, "Desktop Entry", key);
}

/// The files with the user's, the desktop's and the system's choices, the one that holds first.
QStringList lists() {
  QStringList names;
  for (const QString& desktop : CurrentDesktop::names())
    names += desktop.toLower() + QStringLiteral("-mimeapps.list");
  names += QStringLiteral("mimeapps.list");
  QStringList files;
  for (const auto location :
       {QStandardPaths::GenericConfigLocation, QStandardPaths::ApplicationsLocation}) {
    for (const QString& directory : QStandardPaths::standardLocations(location)) {
      for (const QString& name : names)
        files += directory + u'/' + name;
    }
  }
  return files;
}

/// Those of the entries that are installed.
QStringList installed(const QString& identifiers) {
  QStringList entries;
  for (const QString& identifier : identifiers.split(u';', Qt::SkipEmptyParts)) {
    const QString entry =
        QStandardPaths::locate(QStandardPaths::ApplicationsLocation, identifier.trimmed());
    if (!entry.isEmpty()) entries += entry;
  }
  return entries;
}

QString entryOfFileManager() {
  for (const QString& list : lists()) {
    const QStringList chosen = installed(valueIn(list, "Default Applications", folderType));
    if (!chosen.isEmpty()) return chosen.constFirst();
  }
  // Nobody chose. Editors open folders too, which makes them no file managers.
  for (const QString& cache : QStandardPaths::locateAll(QStandardPaths::ApplicationsLocation,
                                                        QStringLiteral("mimeinfo.cache"))) {
    for (const QString& entry : installed(valueIn(cache, "MIME Cache", folderType))) {
      const QStringList categories = valueInEntry(entry, "Categories").split(u';');
      if (categories.contains(QStringLiteral("FileManager"))) return entry;
    }
  }
  return {};
}

}  // namespace

std::string name() {
  const QString entry = entryOfFileManager();
  if (entry.isEmpty()) return {};
  const QString whole = valueInEntry(entry, "Name");
  QString name = whole;
  const QString kind = valueInEntry(entry, "GenericName");
  if (!kind.isEmpty()) name.remove(kind);
  name = name.simplified();
  return (name.isEmpty() ? whole : name).toStdString();
}

}  // namespace tidemar::DefaultFileManager
