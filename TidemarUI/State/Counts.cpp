#include "TidemarUI/State/Counts.h"

namespace tidemar {

std::string countedItems(std::int64_t count) {
  return count == 1 ? "1 item" : std::to_string(count) + " items";
}

std::string countedFolders(std::int64_t count) {
  return count == 1 ? "1 folder" : std::to_string(count) + " folders";
}

std::string itemsGo(std::int64_t count, std::string_view when) {
  return countedItems(count).append(count == 1 ? " goes " : " go ").append(when);
}

}  // namespace tidemar
