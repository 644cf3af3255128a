#include "Platform/Files/Places/BootTime.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/ReadWrite.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

/// Of one of the kernel's own files.
std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::optional<std::int64_t> wholeSeconds(std::string_view digits) {
  std::int64_t seconds = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
  if (error != std::errc() || end != digits.data() + digits.size() || digits.empty())
    return std::nullopt;
  return seconds;
}

/// Two whole lines and nothing else; a number that was cut off would be a wrong one.
std::optional<BootRecord> parseRecord(std::string_view text) {
  const std::size_t lineEnd = text.find('\n');
  if (lineEnd == text.npos || !text.ends_with('\n')) return std::nullopt;
  std::string_view digits = text.substr(lineEnd + 1);
  digits.remove_suffix(digits.empty() ? 0 : 1);
  const auto seconds = wholeSeconds(digits);
  if (!seconds || *seconds < 0) return std::nullopt;
  return BootRecord{std::string(text.substr(0, lineEnd)), Date{static_cast<double>(*seconds)}};
}

/// The record that this user wrote; whatever else may lie there is none.
std::optional<BootRecord> keptRecord(const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat values {};
  if (!file || fstat(file.get(), &values) != 0 || values.st_uid != geteuid()) return std::nullopt;
  std::array<char, 128> text{};
  const ssize_t size = read(file.get(), text.data(), text.size());
  return parseRecord({text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))});
}

/// Replaces whatever lies there, a link itself, in one step. A record that can't be kept costs only
/// the protection from a clock set forward.
void keep(const BootRecord& record, const std::string& path) {
  const std::string text =
      record.bootID + '\n' +
      std::to_string(static_cast<std::int64_t>(record.earliest.secondsSince1970)) + '\n';
  std::string temporary = path + ".XXXXXX";
  const FileDescriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return;
  if (writeAll(file.get(), text) != 0 || std::rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
  }
}

}  // namespace

std::optional<Date> bootTimeInProcStat(std::string_view text) {
  constexpr std::string_view key = "btime ";
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    const std::string_view line = text.substr(start, end - start);
    if (line.starts_with(key)) {
      const auto seconds = wholeSeconds(line.substr(key.size()));
      return seconds ? std::optional(Date{static_cast<double>(*seconds)}) : std::nullopt;
    }
    start = end + 1;
  }
  return std::nullopt;
}

BootRecord earliestBootRecord(std::optional<BootRecord> kept, const std::string& bootID,
                              Date current) {
  if (kept && kept->bootID == bootID && kept->earliest < current) return *std::move(kept);
  return {bootID, current};
}

Date readBootTime() {
  constexpr const char* statistics = "/proc/stat";
  const auto current = bootTimeInProcStat(contentOf(statistics));
  if (!current)
    throw PlatformError("read the time of the last start from", FileURL(statistics), ENODATA);

  std::string bootID = contentOf("/proc/sys/kernel/random/boot_id");
  bootID.resize(std::min(bootID.find('\n'), bootID.size()));
  const auto runtime = StandardDirectories::runtime();
  if (!runtime || bootID.empty()) return *current;

  const std::string path = runtime->appendingPathComponent("tidemar-boot-time").path();
  const auto kept = keptRecord(path);
  const BootRecord record = earliestBootRecord(kept, bootID, *current);
  if (record != kept) keep(record, path);
  return record.earliest;
}

}  // namespace tidemar
