#include "Platform/PlatformError.h"

#include <system_error>
#include <utility>

#include "Platform/Text.h"

namespace tidemar {

PlatformError::PlatformError(std::string operation, FileURL url, int code)
    : PlatformError(std::move(operation), std::move(url), code,
                    std::generic_category().message(code)) {}

PlatformError::PlatformError(std::string operation, FileURL url, int code,
                             const std::string& reason)
    : std::runtime_error("Couldn't " + operation + " “" + displayText(url.path()) + "”: " + reason +
                         "."),
      _operation(std::move(operation)),
      _url(std::move(url)),
      _code(code),
      _reason(reason) {}

std::string textWithoutPath(const std::exception& error) {
  const auto* refusal = dynamic_cast<const PlatformError*>(&error);
  if (refusal == nullptr) return error.what();
  return "Couldn't " + refusal->operation() + ": " + refusal->reason() + ".";
}

}  // namespace tidemar
