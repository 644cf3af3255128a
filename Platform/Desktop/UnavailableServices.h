#pragma once

#include "Platform/Desktop/LoginItem.h"
#include "Platform/Desktop/NotificationCenter.h"

namespace tidemar {

/// What stands for a service that this build doesn't have: it says that it is off, and every
/// request of it fails with a sentence.
class UnavailableNotificationCenter : public NotificationCenter {
 public:
  QCoro::Task<bool> isAuthorized() override;
  QCoro::Task<bool> requestAuthorization() override;
  QCoro::Task<void> add(std::string identifier, std::string title, std::string body) override;
};

class UnavailableLoginItem : public LoginItem {
 public:
  Status status() const override { return Status::off; }
  void registerItem() override;
  void unregisterItem() override;
};

}  // namespace tidemar
