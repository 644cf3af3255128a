#include "Platform/Desktop/ApplicationInstance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>

#include "Platform/Desktop/FreedesktopApplication.h"
#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

const QString serviceName = QStringLiteral("app.quernly.tidemar");
const QString objectPath = QStringLiteral("/app/quernly/tidemar");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

QDBusMessage request(const std::optional<std::string>& url, const ActivationToken& token) {
  QDBusMessage message =
      QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName,
                                     url ? QStringLiteral("Open") : QStringLiteral("Activate"));
  if (url) message << QStringList(QString::fromStdString(urlForBus(*url)));
  message << token.platformData();
  return message;
}

}  // namespace

ApplicationInstance::ApplicationInstance(QObject* parent) : QObject(parent) {}

ApplicationInstance::Role ApplicationInstance::claim(Launch launch,
                                                     const std::optional<std::string>& url,
                                                     const ActivationToken& token) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return takeLock() == true ? Role::first : Role::refused;

  // The object, which Qt gives to this one, is there before the name: whoever sees the name finds
  // it.
  new FreedesktopApplication(this);
  bus.registerObject(objectPath, this);
  if (bus.registerService(serviceName)) {
    // Another session of the user's can have a bus of its own, and the database takes one program.
    return takeLock() == false ? Role::refused : Role::first;
  }

  if (launch == Launch::byDesktop) return Role::handedOver;
  const QDBusMessage answer = bus.call(request(url, token));
  return answer.type() == QDBusMessage::ReplyMessage ? Role::handedOver : Role::refused;
}

std::optional<bool> ApplicationInstance::takeLock() {
  const FileURL directory =
      StandardDirectories::runtime().value_or(StandardDirectories::configuration());
  const FileURL file = directory.appendingPathComponent("app.quernly.tidemar.lock");
  try {
    createDirectory(directory);
  } catch (const PlatformError&) {
    return std::nullopt;
  }
  _lock =
      FileDescriptor(open(file.path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!_lock) return std::nullopt;
  if (flock(_lock.get(), LOCK_EX | LOCK_NB) == 0) return true;
  return errno == EWOULDBLOCK ? std::optional(false) : std::nullopt;
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
