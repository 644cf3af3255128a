#include "Platform/Desktop/FileViewer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QUrl>

namespace tidemar::FileViewer {
namespace {

QByteArray encodedURL(const FileURL& item) {
  // The path is bytes of any encoding: each of them that isn't plain stands escaped.
  return "file://" + QByteArray::fromStdString(item.path()).toPercentEncoding("/");
}

void openFolder(const FileURL& item) {
  QDesktopServices::openUrl(QUrl::fromEncoded(encodedURL(item.deletingLastPathComponent())));
}

}  // namespace

void show(const std::vector<FileURL>& items) {
  if (items.empty()) return;
  QStringList urls;
  for (const FileURL& item : items)
    urls += QString::fromLatin1(encodedURL(item));
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"),
      QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  call << urls << qEnvironmentVariable("XDG_ACTIVATION_TOKEN");

  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [watcher, first = items.front()] {
                     if (watcher->isError()) openFolder(first);
                     watcher->deleteLater();
                   });
}

}  // namespace tidemar::FileViewer
