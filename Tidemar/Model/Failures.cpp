#include "Tidemar/Model/Failures.h"

#include "Platform/PlatformError.h"
#include "TidemarUI/State/FailureLine.h"
#include "TidemarUI/State/SystemBin.h"

namespace tidemar {
namespace {

struct Unexpected : std::exception {
  const char* what() const noexcept override { return "Something unexpected happened."; }
};

template <class Describe>
std::string described(const std::exception_ptr& error, Describe describe) {
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& exception) {
    return describe(exception);
  } catch (...) {
    return describe(Unexpected());
  }
}

}  // namespace

std::string textForLog(const std::exception_ptr& error) {
  return described(error,
                   [](const std::exception& exception) { return textWithoutPath(exception); });
}

std::string lineForUser(const std::exception_ptr& error) {
  return described(error, [](const std::exception& exception) {
    return failureLine(exception, SystemBin::name());
  });
}

std::string leftItemLine(const std::string& path, const std::exception_ptr& error) {
  return described(error, [&path](const std::exception& exception) {
    return leftItemLine(path, exception, SystemBin::name());
  });
}

}  // namespace tidemar
