#include "Platform/Desktop/FileViewer.h"

#include <QCoroDBusPendingCall>
#include <QCoroFuture>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDesktopServices>
#include <QUrl>
#include <QVariantMap>
#include <QtConcurrentRun>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include <fcntl.h>

#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Trash/PercentEncoding.h"

namespace tidemar::FileViewer {
namespace {

const QString fileManagerName = QStringLiteral("org.freedesktop.FileManager1");

/// What there is to show of the items asked for.
struct Present {
  std::vector<FileURL> items;
  std::set<FileURL> folders;  ///< The nearest ones of the items that have gone.
};

bool isPresent(const FileURL& url) {
  std::error_code error;
  // What can't be looked at may well be there.
  return std::filesystem::symlink_status(url.path(), error).type() !=
         std::filesystem::file_type::not_found;
}

Present present(const std::vector<FileURL>& items) {
  Present present;
  for (const FileURL& item : items) {
    if (isPresent(item)) {
      present.items.push_back(item);
      continue;
    }
    FileURL folder = item.deletingLastPathComponent();
    while (!isPresent(folder) && folder != folder.deletingLastPathComponent())
      folder = folder.deletingLastPathComponent();
    present.folders.insert(folder);
  }
  return present;
}

QString fileURI(const FileURL& url) {
  return QStringLiteral("file://") + QString::fromStdString(percentEncoded(url.path()));
}

template <class URLs>
QDBusMessage fileManagerRequest(const QString& method, const URLs& urls, const QString& startupID) {
  QStringList uris;
  for (const FileURL& url : urls)
    uris << fileURI(url);
  QDBusMessage request = QDBusMessage::createMethodCall(
      fileManagerName, QStringLiteral("/org/freedesktop/FileManager1"), fileManagerName, method);
  request << uris << startupID;
  return request;
}

/// Asks the desktop's portal to open the folder that an item lies in.
QDBusMessage portalRequest(const FileDescriptor& item) {
  QDBusMessage request = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.portal.Desktop"),
      QStringLiteral("/org/freedesktop/portal/desktop"),
      QStringLiteral("org.freedesktop.portal.OpenURI"), QStringLiteral("OpenDirectory"));
  request << QString() << QVariant::fromValue(QDBusUnixFileDescriptor(item.get())) << QVariantMap();
  return request;
}

/// A descriptor that names the item and opens nothing. None for a link, which it would follow: the
/// portal takes no descriptor of a link itself.
FileDescriptor naming(const FileURL& item) {
  std::error_code error;
  if (std::filesystem::is_symlink(item.path(), error)) return {};
  return FileDescriptor(open(item.path().c_str(), O_PATH | O_CLOEXEC));
}

QCoro::Task<bool> isTaken(QDBusConnection bus, QDBusMessage request) {
  if (!bus.isConnected()) co_return false;
  const QDBusMessage answer = co_await bus.asyncCall(request);
  co_return answer.type() == QDBusMessage::ReplyMessage;
}

void openFolder(const FileURL& folder) {
  QDesktopServices::openUrl(QUrl::fromEncoded(fileURI(folder).toLatin1()));
}

/// The first item of each folder, in the folders' order.
std::vector<FileURL> oneOfEachFolder(const std::vector<FileURL>& items) {
  std::map<FileURL, FileURL> firstByFolder;
  for (const FileURL& item : items)
    firstByFolder.try_emplace(item.deletingLastPathComponent(), item);
  std::vector<FileURL> firsts;
  firsts.reserve(firstByFolder.size());
  for (const auto& [folder, item] : firstByFolder)
    firsts.push_back(item);
  return firsts;
}

QCoro::Task<void> openFoldersOf(QDBusConnection bus, std::vector<FileURL> items) {
  for (const FileURL& item : oneOfEachFolder(items)) {
    bool isShown = false;
    if (const FileDescriptor descriptor = naming(item)) {
      const QDBusMessage request = portalRequest(descriptor);
      isShown = co_await isTaken(bus, request);
    }
    if (!isShown) openFolder(item.deletingLastPathComponent());
  }
}

/// The connection that answers under a name; empty for none.
QCoro::Task<QString> answering(QDBusConnection bus, QString name, bool mayStart) {
  QDBusMessage ping = QDBusMessage::createMethodCall(name, QStringLiteral("/"),
                                                     QStringLiteral("org.freedesktop.DBus.Peer"),
                                                     QStringLiteral("Ping"));
  ping.setAutoStartService(mayStart);
  const QDBusMessage answer = co_await bus.asyncCall(ping);
  co_return answer.type() == QDBusMessage::ReplyMessage ? answer.service() : QString();
}

/// Whether the file manager, which is started for that, is Nautilus: it opens a window for each
/// item, where others select all of a folder's in one.
QCoro::Task<bool> opensAWindowForEachItem(QDBusConnection bus) {
  const QString fileManager = co_await answering(bus, fileManagerName, true);
  const QString nautilus = co_await answering(bus, QStringLiteral("org.gnome.Nautilus"), false);
  co_return !fileManager.isEmpty() && fileManager == nautilus;
}

}  // namespace

QCoro::Task<void> showItems(QDBusConnection sessionBus, std::vector<FileURL> items,
                            QString startupID) {
  // A drive that doesn't answer holds up a look at it for long.
  const QFuture<Present> look = QtConcurrent::run(&present, std::move(items));
  Present there = co_await look;

  if (!there.items.empty()) {
    if (there.items.size() > 1) {
      const bool isOneEnough = co_await opensAWindowForEachItem(sessionBus);
      if (isOneEnough) there.items = oneOfEachFolder(there.items);
    }
    const QDBusMessage request =
        fileManagerRequest(QStringLiteral("ShowItems"), there.items, startupID);
    const bool isShown = co_await isTaken(sessionBus, request);
    if (!isShown) co_await openFoldersOf(sessionBus, there.items);
  } else if (!there.folders.empty()) {
    const QDBusMessage request =
        fileManagerRequest(QStringLiteral("ShowFolders"), there.folders, startupID);
    const bool isShown = co_await isTaken(sessionBus, request);
    if (isShown) co_return;
    for (const FileURL& folder : there.folders)
      openFolder(folder);
  }
}

void show(const std::vector<FileURL>& items) {
  showItems(QDBusConnection::sessionBus(), items, startupIDForRequest());
}

}  // namespace tidemar::FileViewer
