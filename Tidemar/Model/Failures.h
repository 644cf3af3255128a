#pragma once

#include <exception>
#include <string>

namespace tidemar {

// What was thrown needn't be a std::exception, and is told nonetheless. Any thread.

/// What a piece of work threw, if anything.
struct Caught {
  std::exception_ptr error;

  explicit operator bool() const noexcept { return error != nullptr; }
};

/// The text for the public part of the log, without a path.
std::string textForLog(const std::exception_ptr& error);

/// The sentence for the user.
std::string lineForUser(const std::exception_ptr& error);

/// The sentence for the user on an item that this kept from being removed.
std::string leftItemLine(const std::string& path, const std::exception_ptr& error);

}  // namespace tidemar
