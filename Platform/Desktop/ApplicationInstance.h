#pragma once

#include <QObject>
#include <QVariantList>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// Makes Tidemar one process a user, and hands what a second start asks for to the first: over the
/// session bus by org.freedesktop.Application under the name "app.quernly.tidemar". Where there is
/// no bus, or the first is on another one, a lock in the user's runtime directory keeps a second
/// process from starting; then nothing can be handed over. Main thread.
class ApplicationInstance : public QObject {
  Q_OBJECT
 public:
  enum class Role {
    first,       ///< This process is the application.
    handedOver,  ///< Another is, and took the request, if there was one.
    refused,     ///< Another is, and can't be reached.
  };

  enum class Launch {
    byUser,     ///< Brings an application that runs already forward, or has it open the URL.
    byDesktop,  ///< Asks nothing of an application that runs already.
  };

  explicit ApplicationInstance(QObject* parent = nullptr);

  /// Call once. `url` is the bytes of the command line; the token goes to the first with the
  /// request.
  Role claim(Launch launch, const std::optional<std::string>& url, const ActivationToken& token);

 signals:
  /// The user started the application again.
  void activated();

  /// A URL came in, in the bytes that were sent.
  void opened(const std::string& url);

  /// An action was asked for by its name.
  void actionActivated(const std::string& name, const QVariantList& parameters);

 private:
  /// Whether no other process holds the lock; none where there is no place for one.
  std::optional<bool> takeLock();

  FileDescriptor _lock;
};

/// The URL with every byte that isn't printable ASCII percent-encoded, which names the same thing
/// and can cross the bus.
std::string urlForBus(std::string_view url);

}  // namespace tidemar
