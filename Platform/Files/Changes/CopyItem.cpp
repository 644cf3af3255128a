#include "Platform/Files/Changes/CopyItem.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr int cantStart = 127;

/// A command line that is complete before the fork: behind it nothing may be allocated.
struct CommandLine {
  std::array<std::string, 10> texts;
  std::array<char*, 11> pointers{};

  explicit CommandLine(std::array<std::string, 10> arguments) : texts(std::move(arguments)) {
    std::ranges::transform(texts, pointers.begin(), [](std::string& text) { return text.data(); });
  }
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;
};

/// What the forked process does: only calls that are safe there, since another thread may have held
/// any lock when it came to be.
[[noreturn]] void becomeCopier(pid_t parent, int messages, std::array<int, 2> kept,
                               const CommandLine& line) noexcept {
  // Who has died before this call sends no signal any more.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(cantStart);
  close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
  dup2(messages, STDERR_FILENO);
  for (const int descriptor : kept)
    fcntl(descriptor, F_SETFD, 0);
  std::array<char, 9> locale = {"LC_ALL=C"};
  const std::array<char*, 2> environment = {locale.data(), nullptr};
  for (const char* program : {"/usr/bin/cp", "/bin/cp"})
    execve(program, line.pointers.data(), environment.data());
  _exit(cantStart);
}

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

  // The attributes are named one by one: with "all" some would be lost without a word.
  const CommandLine line({"cp", "--recursive", "--no-dereference", "--one-file-system",
                          "--preserve=mode,ownership,timestamps,links,xattr", "--reflink=auto",
                          "--no-target-directory", "--", pathOf(fromDirectory, fromName),
                          pathOf(toDirectory, toName)});
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process < 0) throw PlatformError(operation, url, errno);
  if (process == 0) becomeCopier(parent, input.get(), {fromDirectory, toDirectory}, line);
  input.close();
  const std::string messages = readOutput(output);
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) throw PlatformError(operation, url, errno);
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  if (WIFEXITED(status) && WEXITSTATUS(status) == cantStart)
    throw PlatformError(operation, url, ENOENT, "the program cp can't be started");
  throw PlatformError(operation, url, EIO, reasonIn(messages));
}

}  // namespace tidemar
