#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidemar {

/// How the items of a folder go.
enum class Disposal : std::uint8_t {
  bin,      ///< Moved to the system's Bin; can be put back.
  delete_,  ///< Deleted permanently; can't be put back. Its word is "delete".
};

/// The word that stands for the disposal in the database: "bin" or "delete".
std::string_view rawValue(Disposal disposal) noexcept;

/// The disposal of exactly this word, case included; none for any other text.
std::optional<Disposal> disposalFromRawValue(std::string_view text) noexcept;

}  // namespace tidemar
