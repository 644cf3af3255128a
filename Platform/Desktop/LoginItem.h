#pragma once

namespace tidemar {

/// Whether the desktop starts Tidemar when the user logs in. Main thread.
class LoginItem {
 public:
  enum class Status { off, enabled, requiresApproval };

  virtual ~LoginItem() = default;

  /// Asked anew each time, since the user may change it in the system's settings.
  virtual Status status() const = 0;

  /// Both throw std::exception with a sentence for the user.
  virtual void registerItem() = 0;
  virtual void unregisterItem() = 0;
};

}  // namespace tidemar
