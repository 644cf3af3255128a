#include "TidemarCore/Disposal.h"

namespace tidemar {

std::string_view rawValue(Disposal disposal) noexcept {
  return disposal == Disposal::bin ? "bin" : "delete";
}

std::optional<Disposal> disposalFromRawValue(std::string_view text) noexcept {
  if (text == "bin") return Disposal::bin;
  if (text == "delete") return Disposal::delete_;
  return std::nullopt;
}

}  // namespace tidemar
