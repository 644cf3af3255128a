#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "Platform/LogMessage.h"

namespace tidemar {

enum class LogLevel : std::uint8_t { info, error, fault };

/// Writes to the system's journal under one subsystem and category, and to the standard error where
/// there is no journal or a terminal reads it:
///
///     const Logger logger("app.quernly.tidemar", "engine");
///     logger.log(LogLevel::error, "Couldn't remove %{private}s: %{public}s", path, error.what());
///
/// What is private is written to a terminal alone. Immutable; any thread may log, and a line is
/// never mixed with another. A line that can't be written is lost: logging never fails.
class Logger {
 public:
  Logger(std::string subsystem, std::string category);

  /// The values are texts and integers, as the format has them; another number or type of values
  /// doesn't compile.
  template <class... Values>
  void log(LogLevel level, LogFormat<std::type_identity_t<std::remove_cvref_t<Values>>...> format,
           const Values&... values) const {
    const std::array<LogArgument, sizeof...(Values)> arguments = {argument(values)...};
    write(level, format.text(), arguments);
  }

 private:
  static LogArgument argument(std::string_view text) { return text; }
  static LogArgument argument(std::integral auto number) {
    return static_cast<std::int64_t>(number);
  }

  void write(LogLevel level, std::string_view format, std::span<const LogArgument> arguments) const;

  std::string _subsystem;
  std::string _category;
};

}  // namespace tidemar
