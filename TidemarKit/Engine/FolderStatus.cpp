#include "TidemarKit/Engine/FolderStatus.h"

#include "TidemarCore/SaturatingArithmetic.h"

namespace tidemar {

std::int64_t FolderStatus::totalSize() const noexcept {
  std::int64_t total = 0;
  for (const Item& item : items)
    total = addingSaturated(total, item.size);
  return total;
}

}  // namespace tidemar
