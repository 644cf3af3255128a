#include "Platform/Files/Changes/CopyItem.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <string_view>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

class SpawnActions {
 public:
  SpawnActions() { check(posix_spawn_file_actions_init(&_actions)); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&_actions); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;

  void redirect(int from, int to) { check(posix_spawn_file_actions_adddup2(&_actions, from, to)); }
  /// Duplicating a descriptor onto itself leaves it open in the child.
  void keepOpen(int descriptor) { redirect(descriptor, descriptor); }

  const posix_spawn_file_actions_t* get() const { return &_actions; }

 private:
  static void check(int code) {
    if (code != 0) throw std::bad_alloc();
  }
  posix_spawn_file_actions_t _actions{};
};

std::string pathOf(int directory, const std::string& name) {
  return "/proc/self/fd/" + std::to_string(directory) + "/" + name;
}

/// Reads to the end, so that the writer is never held up; keeps the beginning.
std::string readOutput(const FileDescriptor& pipe) {
  constexpr std::size_t longest = 4096;
  std::string output;
  std::array<char, 4096> buffer{};
  while (true) {
    const ssize_t size = read(pipe.get(), buffer.data(), buffer.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return output;
    output.append(buffer.data(), std::min(static_cast<std::size_t>(size), longest - output.size()));
  }
}

/// The reason at the end of the first line "cp: {what} '{path}': {reason}".
std::string reasonIn(std::string_view output) {
  const std::string_view line = output.substr(0, output.find('\n'));
  const std::size_t colon = line.rfind(": ");
  const std::string_view reason = colon == line.npos ? line : line.substr(colon + 2);
  return reason.empty() ? "it can't be copied" : std::string(reason);
}

}  // namespace

void copyItem(int fromDirectory, const std::string& fromName, int toDirectory,
              const std::string& toName, const FileURL& url, const std::string& operation) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw PlatformError(operation, url, errno);
  const FileDescriptor output(ends[0]);
  FileDescriptor input(ends[1]);

  SpawnActions actions;
  actions.redirect(input.get(), STDERR_FILENO);
  actions.keepOpen(fromDirectory);
  actions.keepOpen(toDirectory);

  std::array<std::string, 9> arguments = {"cp",
                                          "--recursive",
                                          "--no-dereference",
                                          "--preserve=all",
                                          "--reflink=auto",
                                          "--no-target-directory",
                                          "--",
                                          pathOf(fromDirectory, fromName),
                                          pathOf(toDirectory, toName)};
  std::array<char*, 10> argumentList{};
  for (std::size_t i = 0; i < arguments.size(); ++i)
    argumentList[i] = arguments[i].data();
  std::string locale = "LC_ALL=C";
  std::array<char*, 2> environment = {locale.data(), nullptr};

  pid_t process = 0;
  int code =
      posix_spawnp(&process, "cp", actions.get(), nullptr, argumentList.data(), environment.data());
  if (code != 0) throw PlatformError(operation, url, code, "the program cp can't be started");
  input.close();
  const std::string messages = readOutput(output);
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) throw PlatformError(operation, url, errno);
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  throw PlatformError(operation, url, EIO, reasonIn(messages));
}

}  // namespace tidemar
