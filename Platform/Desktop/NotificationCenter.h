#pragma once

#include <QCoroTask>
#include <string>

namespace tidemar {

/// The desktop's notifications. Main thread.
class NotificationCenter {
 public:
  virtual ~NotificationCenter() = default;

  /// Whether notifications reach the user.
  virtual QCoro::Task<bool> isAuthorized() = 0;

  /// Asks for permission and answers whether it is there. Throws where the question can't be put.
  virtual QCoro::Task<bool> requestAuthorization() = 0;

  /// Delivers a quiet notification now, in place of an earlier one under the same identifier.
  /// Returns once the system took it and throws std::exception if it didn't. The texts are UTF-8
  /// and shown as they are.
  virtual QCoro::Task<void> add(std::string identifier, std::string title, std::string body) = 0;
};

}  // namespace tidemar
