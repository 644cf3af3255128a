#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tidemar {

/// "1 item", or "{count} items" for any other count. Digits stand without grouping.
std::string countedItems(std::int64_t count);

/// "1 folder", or "{count} folders" for any other count.
std::string countedFolders(std::int64_t count);

/// "1 item goes {when}", or "{count} items go {when}" for any other count.
std::string itemsGo(std::int64_t count, std::string_view when);

}  // namespace tidemar
