#pragma once

#include <QObject>
#include <QVariantList>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Makes Tidemar one process a user, and hands what a second start asks for to the first: over the
/// session bus by org.freedesktop.Application under the name "app.quernly.tidemar". That there is
/// no second one rests on a lock in the directory of the database, "tidemar.lock", whatever the
/// bus; where there is none, or the first is on another one, nothing can be handed over. Main
/// thread.
class ApplicationInstance : public QObject {
  Q_OBJECT
 public:
  enum class Role {
    first,       ///< This process is the application.
    handedOver,  ///< Another is, and took the request, if there was one.
    refused,     ///< Another is, or has the name or the database, and can't be reached.
  };

  enum class Launch {
    byUser,     ///< Hands an application that runs already what is asked for.
    byDesktop,  ///< Asks nothing of an application that runs already.
  };

  /// What a start asks for: the URL, else the action, else that the application comes forward.
  struct Request {
    Launch launch = Launch::byUser;
    std::optional<std::string> url = {};  ///< The bytes of the command line.
    std::string action = {};              ///< Its name; empty for none.
  };

  /// The lock lies in this directory, which must be there.
  explicit ApplicationInstance(const FileURL& directory, QObject* parent = nullptr);

  /// Call once, before anything is opened there. The token goes to the first with the request.
  /// Waits a little for a first that is just starting or ending. Throws `PlatformError` where
  /// nothing can be locked and there is nobody to hand over to.
  Role claim(const Request& request, const ActivationToken& token);

 signals:
  /// The user started the application again.
  void activated();

  /// A URL came in, in the bytes that were sent.
  void opened(const std::string& url);

  /// An action was asked for by its name.
  void actionActivated(const std::string& name, const QVariantList& parameters);

 private:
  /// Whether no other process holds the lock. Throws where there can be none.
  bool takeLock();

  FileURL _file;
  FileDescriptor _lock;
};

/// The URL with every byte that isn't printable ASCII percent-encoded, which names the same thing
/// and can cross the bus.
std::string urlForBus(std::string_view url);

}  // namespace tidemar
