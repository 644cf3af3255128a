/// menuEntries: switches the command in one file manager's menu for the home of its environment.
/// Usage: menuEntries install|uninstall name helper [directory of the Python loaders]

#include <cstdlib>
#include <iostream>
#include <string_view>

#include "Platform/Extension/MenuEntries.h"

int main(int argc, char** argv) {
  if (argc < 4) return EXIT_FAILURE;
  std::vector<tidemar::FileURL> loaders;
  if (argc > 4) loaders.emplace_back(argv[4]);
  for (const auto& entry : tidemar::menuEntries(tidemar::FileURL(argv[3]), loaders)) {
    if (entry->name() != argv[2]) continue;
    if (std::string_view(argv[1]) == "install") {
      entry->install();
    } else {
      entry->uninstall();
    }
    return EXIT_SUCCESS;
  }
  std::cerr << "There is no file manager " << argv[2] << ".\n";
  return EXIT_FAILURE;
}
