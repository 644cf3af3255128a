#include "Tidemar/CommandLine.h"

#include <stdexcept>

#include "Platform/Desktop/AutostartEntry.h"
#include "Platform/Text.h"
#include "Tidemar/Model/FolderLink.h"

namespace tidemar {
namespace {

constexpr const char* help =
    "Usage: tidemar [URL | OPTION]\n"
    "Keeps chosen folders from filling up. Without arguments it opens its window.\n"
    "\n"
    "  tidemar://folder?path=PATH  makes the folder Temporary; PATH is percent-encoded\n"
    "  --settings                  opens the settings\n"
    "  --setup                     opens the setup\n"
    "  --help                      prints this\n"
    "  --version                   prints the version\n";

}  // namespace

CommandLine parseCommandLine(std::span<const std::string> arguments) {
  if (arguments.empty()) return {};
  if (arguments.size() > 1) throw std::invalid_argument("Tidemar takes one URL and no more.");
  const std::string& argument = arguments.front();
  if (argument == AutostartEntry::loginArgument || argument == "--launched-by-bus") {
    return {.isByDesktop = true, .url = {}};
  }
  if (argument == "--settings") return {.action = "settings"};
  if (argument == "--setup") return {.action = "setup"};
  if (argument == "--help") return {.answer = help};
  if (argument == "--version") return {.answer = "Tidemar " TIDEMAR_VERSION "\n"};
  if (argument.size() > longestFolderLink) {
    throw std::invalid_argument("Tidemar takes no URL longer than 64 KiB.");
  }
  if (argument.starts_with('-')) {
    throw std::invalid_argument("Tidemar has no option “" + displayText(argument) + "”.");
  }
  return {.isByDesktop = false, .url = argument};
}

}  // namespace tidemar
