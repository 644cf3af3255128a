/// tidemar-make-temporary: what the file managers run on the selected folders. Each argument is a
/// "file:" URI or an absolute path, as raw bytes; for each it starts the `tidemar` beside it with
/// the folder's link, which hands over to the one that runs already.

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include <spawn.h>
#include <unistd.h>

#include "Platform/Files/Trash/PercentEncoding.h"

namespace {

std::optional<std::string> pathOf(std::string_view argument) {
  if (argument.starts_with('/')) return std::string(argument);
  for (const std::string_view prefix : {"file://localhost/", "file:///"}) {
    if (argument.starts_with(prefix))
      return tidemar::percentDecoded(argument.substr(prefix.size() - 1));
  }
  return std::nullopt;
}

/// Starts the program in a session of its own: it may become the one that stays, and has to outlive
/// the file manager. Answers whether it was started.
bool open(const std::string& program, std::string link) {
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::string name = program;
  char* const arguments[] = {name.data(), link.data(), nullptr};
  const int code = posix_spawn(nullptr, program.c_str(), nullptr, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  if (code != 0) std::cerr << "Couldn't start " << program << ": " << std::strerror(code) << ".\n";
  return code == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "Usage: tidemar-make-temporary folder…\n";
    return EXIT_FAILURE;
  }
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::string program = self.parent_path() / "tidemar";

  int status = EXIT_SUCCESS;
  for (int i = 1; i < argc; ++i) {
    const auto path = pathOf(argv[i]);
    if (!path) {
      std::cerr << "Only folders of this computer can be made Temporary: " << argv[i] << "\n";
      status = EXIT_FAILURE;
    } else if (!open(program, "tidemar://folder?path=" + tidemar::percentEncoded(*path))) {
      status = EXIT_FAILURE;
    }
  }
  return status;
}
