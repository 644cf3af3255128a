#include "Platform/Desktop/PackageOwnership.h"

#include <fstream>

namespace tidemar {

std::optional<std::string> packageOfProgram(const FileURL& program, const FileURL& lists) {
  std::string package(program.lastPathComponent());
  std::ifstream list(lists.appendingPathComponent(package + ".list").path());
  for (std::string line; std::getline(list, line);) {
    if (line == program.path()) return package;
  }
  return std::nullopt;
}

}  // namespace tidemar
