#include "Platform/Desktop/UnavailableServices.h"

#include <stdexcept>

namespace tidemar {

QCoro::Task<bool> UnavailableNotificationCenter::isAuthorized() {
  co_return false;
}

QCoro::Task<bool> UnavailableNotificationCenter::requestAuthorization() {
  co_return false;
}

QCoro::Task<void> UnavailableNotificationCenter::add(std::string, std::string, std::string) {
  throw std::runtime_error("This version of Tidemar doesn't send notifications.");
  co_return;
}

void UnavailableLoginItem::registerItem() {
  throw std::runtime_error("This version of Tidemar can't open at login.");
}

void UnavailableLoginItem::unregisterItem() {
  throw std::runtime_error("This version of Tidemar can't open at login.");
}

}  // namespace tidemar
