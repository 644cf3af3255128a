#include "Tidemar/CommandLine.h"

#include <stdexcept>

#include "Platform/Desktop/AutostartEntry.h"
#include "Platform/Text.h"

namespace tidemar {

CommandLine parseCommandLine(std::span<const std::string> arguments) {
  constexpr std::size_t longestURL = 64 * 1024;
  if (arguments.empty()) return {};
  if (arguments.size() > 1) throw std::invalid_argument("Tidemar takes one URL and no more.");
  const std::string& argument = arguments.front();
  if (argument == AutostartEntry::loginArgument || argument == "--launched-by-bus") {
    return {.isByDesktop = true, .url = {}};
  }
  if (argument.size() > longestURL) {
    throw std::invalid_argument("Tidemar takes no URL longer than 64 KiB.");
  }
  if (argument.starts_with('-')) {
    throw std::invalid_argument("Tidemar has no option “" + displayText(argument) + "”.");
  }
  return {.isByDesktop = false, .url = argument};
}

}  // namespace tidemar
