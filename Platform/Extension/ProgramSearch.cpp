#include "Platform/Extension/ProgramSearch.h"

#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace tidemar {

std::optional<std::string> findProgram(std::string_view name) {
  const char* variable = std::getenv("PATH");
  std::string_view path = variable == nullptr ? "/usr/local/bin:/usr/bin:/bin" : variable;
  while (!path.empty()) {
    const std::string_view directory = path.substr(0, path.find(':'));
    path.remove_prefix(std::min(directory.size() + 1, path.size()));
    if (!directory.starts_with('/')) continue;
    std::string file = std::string(directory) + "/" + std::string(name);
    struct stat values {};
    if (stat(file.c_str(), &values) == 0 && S_ISREG(values.st_mode) &&
        access(file.c_str(), X_OK) == 0)
      return file;
  }
  return std::nullopt;
}

}  // namespace tidemar
