#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace tidemar {

/// Byte counts as file sizes of one locale, in units of thousands from bytes to petabytes. Made
/// once for a locale, by its ICU name; any thread may use one.
class ByteCountFormat {
 public:
  explicit ByteCountFormat(const std::string& localeName);
  ~ByteCountFormat();

  std::string text(std::int64_t bytes) const;

 private:
  struct Units;
  const std::unique_ptr<const Units> _units;
};

}  // namespace tidemar
