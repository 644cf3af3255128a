#include "Platform/Desktop/ApplicationInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "Platform/Desktop/FreedesktopApplication.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

using namespace std::chrono_literals;

/// A first that is just starting has its name long before; a user who must wait doesn't wait long.
constexpr auto patience = 5s;

const QString serviceName = QStringLiteral("app.quernly.tidemar");
const QString objectPath = QStringLiteral("/app/quernly/tidemar");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

QDBusMessage messageFor(const ApplicationInstance::Request& request, const ActivationToken& token) {
  const auto call = [](const QString& method) {
    return QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, method);
  };
  QDBusMessage message = call(QStringLiteral("Activate"));
  if (request.url) {
    message = call(QStringLiteral("Open"));
    message << QStringList(QString::fromStdString(urlForBus(*request.url)));
  } else if (!request.action.empty()) {
    message = call(QStringLiteral("ActivateAction"));
    message << QString::fromStdString(request.action) << QVariantList();
  }
  message << token.platformData();
  // Nobody is to be started for it: that is what this process is there for.
  message.setAutoStartService(false);
  return message;
}

/// Whether a running application took the request.
bool handOver(QDBusConnection& bus, const ApplicationInstance::Request& request,
              const ActivationToken& token) {
  if (request.launch == ApplicationInstance::Launch::byDesktop) {
    return bus.interface()->isServiceRegistered(serviceName);
  }
  return bus.call(messageFor(request, token)).type() == QDBusMessage::ReplyMessage;
}

}  // namespace

ApplicationInstance::ApplicationInstance(const FileURL& directory, QObject* parent)
    : QObject(parent), _file(directory.appendingPathComponent("tidemar.lock")) {}

ApplicationInstance::Role ApplicationInstance::claim(const Request& request,
                                                     const ActivationToken& token) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return takeLock() ? Role::first : Role::refused;

  // The object, which Qt gives to this one, is there before the name: whoever sees the name finds
  // it.
  new FreedesktopApplication(this);
  bus.registerObject(objectPath, this);
  const auto end = std::chrono::steady_clock::now() + patience;
  do {
    if (handOver(bus, request, token)) return Role::handedOver;
    if (takeLock() && bus.registerService(serviceName)) return Role::first;
    // One that starts has the lock before the name; one that ends may lose the lock before it.
    std::this_thread::sleep_for(20ms);
  } while (std::chrono::steady_clock::now() < end);
  return Role::refused;
}

bool ApplicationInstance::takeLock() {
  if (!_lock) {
    FileDescriptor file(open(_file.path().c_str(),
                             O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                             S_IRUSR | S_IWUSR));
    struct stat status {};
    if (!file || fstat(file.get(), &status) != 0) throw PlatformError("lock", _file, errno);
    if (!S_ISREG(status.st_mode)) throw PlatformError("lock", _file, EPERM, "it isn't a file");
    _lock = std::move(file);
  }
  if (flock(_lock.get(), LOCK_EX | LOCK_NB) == 0) return true;
  if (errno != EWOULDBLOCK) throw PlatformError("lock", _file, errno);
  return false;
}

std::string urlForBus(std::string_view url) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string result;
  for (const char c : url) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0x20 && byte < 0x7F) {
      result += c;
    } else {
      result += {'%', digits[byte >> 4U], digits[byte & 15U]};
    }
  }
  return result;
}

}  // namespace tidemar
