#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// A request that the operating system refused, or that this layer refuses because it isn't safe.
/// `what()` is one whole sentence for the user, in valid UTF-8.
class PlatformError : public std::runtime_error {
 public:
  /// The sentence is made of the operation, the path and the system's text for the code:
  /// "Couldn't {operation} “{path}”: {text}."
  PlatformError(std::string operation, FileURL url, int code);

  /// As above, with a reason of our own in place of the system's text.
  PlatformError(std::string operation, FileURL url, int code, const std::string& reason);

  /// What was tried: a verb phrase such as "read".
  const std::string& operation() const noexcept { return _operation; }
  const FileURL& url() const noexcept { return _url; }

  /// An errno value.
  int code() const noexcept { return _code; }

  /// Why, without the path: the system's text for the code, or the reason of our own.
  const std::string& reason() const noexcept { return _reason; }

 private:
  std::string _operation;
  FileURL _url;
  int _code;
  std::string _reason;
};

/// An error's text for the public part of the log, where no path of the user's may stand: that of
/// `what()`, of a `PlatformError` without its path.
std::string textWithoutPath(const std::exception& error);

}  // namespace tidemar
