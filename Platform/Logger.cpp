#include "Platform/Logger.h"

#define SD_JOURNAL_SUPPRESS_LOCATION
#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

namespace tidemar {
namespace {

int priority(LogLevel level) {
  switch (level) {
    case LogLevel::info:
      return LOG_INFO;
    case LogLevel::error:
      return LOG_ERR;
    case LogLevel::fault:
      return LOG_CRIT;
  }
  return LOG_ERR;
}

std::string_view word(LogLevel level) {
  switch (level) {
    case LogLevel::info:
      return "info";
    case LogLevel::error:
      return "error";
    case LogLevel::fault:
      return "fault";
  }
  return "error";
}

/// Answers whether the journal took the entry. Asked for the socket first, since sending without a
/// journal passes for success.
bool sendToJournal(std::span<const std::string> fields) {
  if (access("/run/systemd/journal/socket", W_OK) != 0) return false;
  std::array<iovec, 4> parts{};
  std::ranges::transform(fields, parts.begin(), [](const std::string& field) {
    return iovec{const_cast<char*>(field.data()), field.size()};
  });
  return sd_journal_sendv(parts.data(), static_cast<int>(fields.size())) >= 0;
}

void writeToStandardError(std::string_view line) {
  while (!line.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    line.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

Logger::Logger(std::string subsystem, std::string category)
    : _subsystem(std::move(subsystem)), _category(std::move(category)) {}

void Logger::write(LogLevel level, std::string_view format,
                   std::span<const LogArgument> arguments) const {
  const std::array<std::string, 4> fields = {
      "MESSAGE=" + logMessage(format, arguments, PrivateValues::hidden),
      "PRIORITY=" + std::to_string(priority(level)), "SUBSYSTEM=" + _subsystem,
      "CATEGORY=" + _category};
  const bool isJournaled = sendToJournal(fields);
  const bool isOnTerminal = isatty(STDERR_FILENO) == 1;
  if (isJournaled && !isOnTerminal) return;

  std::string line = _subsystem + " " + _category + " " + std::string(word(level)) + ": ";
  line +=
      logMessage(format, arguments, isOnTerminal ? PrivateValues::shown : PrivateValues::hidden);
  writeToStandardError(line += '\n');
}

}  // namespace tidemar
