#include "Platform/Files/Places/BootTime.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

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

std::optional<BootRecord> parseRecord(std::string_view text) {
  const std::size_t lineEnd = text.find('\n');
  if (lineEnd == std::string_view::npos) return std::nullopt;
  const std::string_view rest = text.substr(lineEnd + 1);
  const auto seconds = wholeSeconds(rest.substr(0, rest.find('\n')));
  if (!seconds) return std::nullopt;
  return BootRecord{std::string(text.substr(0, lineEnd)), Date{static_cast<double>(*seconds)}};
}

void keep(const BootRecord& record, const std::string& path) {
  // A record that can't be kept costs only the protection from a clock set forward.
  const std::string temporary = path + ".new";
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  file << record.bootID << '\n'
       << static_cast<std::int64_t>(record.earliest.secondsSince1970) << '\n';
  file.close();
  if (file.fail() || std::rename(temporary.c_str(), path.c_str()) != 0)
    std::remove(temporary.c_str());
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
  const auto kept = parseRecord(contentOf(path));
  const BootRecord record = earliestBootRecord(kept, bootID, *current);
  if (record != kept) keep(record, path);
  return record.earliest;
}

}  // namespace tidemar
