#include "Platform/Files/Trash/TrashRecord.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/ReadWrite.h"
#include "Platform/Files/Trash/PercentEncoding.h"

namespace tidemar {
namespace {

constexpr const char* sizesName = "directorysizes";
constexpr std::size_t longestSizes = 16 * 1024 * 1024;
constexpr std::size_t longestRecord = 64 * 1024;
constexpr const char* newSizesName = ".directorysizes.tidemar";
constexpr int recordFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

std::string recordName(const std::string& name) {
  return name + std::string(trashRecordEnding);
}

/// Whether an attempt to read a record failed because none is there, but a link, a socket, a
/// directory or nothing.
bool saysThatNoneIsThere(int code) {
  constexpr std::array codes = {ENOENT, ENAMETOOLONG, ELOOP, ENXIO, EISDIR, EFBIG};
  return std::ranges::find(codes, code) != codes.end();
}

enum class Durability { flushed, unflushed };

int writeWhole(int file, std::string_view text, Durability durability) noexcept {
  const int code = writeAll(file, text);
  if (code != 0 || durability == Durability::unflushed) return code;
  return fsync(file) == 0 ? 0 : errno;
}

/// Whether others are at work with a file. Where locks can't be had nobody is known to be.
bool isLockedByOthers(const FileDescriptor& file) noexcept {
  return flock(file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

/// Creates a file that didn't exist and writes it whole, or leaves none. Answers it open.
std::expected<FileDescriptor, int> makeFile(int directory, const char* name, std::string_view text,
                                            Durability durability) noexcept {
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor file(openat(directory, name, flags, 0600));
  if (!file) return std::unexpected(errno);
  // One without content is left alone for a while, as it is here for a moment.
  flock(file.get(), LOCK_EX | LOCK_NB);
  const int code = writeWhole(file.get(), text, durability);
  if (code == 0) return file;
  unlinkat(directory, name, 0);
  return std::unexpected(code);
}

/// As above, but written and locked before it has a name, so that a process that is killed leaves
/// nothing without content. Answers none where the file system has no files without a name.
std::optional<std::expected<FileDescriptor, int>> makeFileAtOnce(int directory, const char* name,
                                                                 std::string_view text) {
  FileDescriptor file(openat(directory, ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600));
  if (!file) return std::nullopt;
  if (const int code = writeAll(file.get(), text); code != 0) return std::unexpected(code);
  flock(file.get(), LOCK_EX | LOCK_NB);
  const std::string unnamed = "/proc/self/fd/" + std::to_string(file.get());
  if (linkat(AT_FDCWD, unnamed.c_str(), directory, name, AT_SYMLINK_FOLLOW) != 0) {
    if (errno == EEXIST) return std::unexpected(EEXIST);
    return std::nullopt;
  }
  if (fsync(file.get()) == 0) return file;
  const int code = errno;
  unlinkat(directory, name, 0);
  return std::unexpected(code);
}

/// The name that a line "{size} {time} {percent-encoded name}" is about.
std::optional<std::string> nameInSizesLine(std::string_view line) {
  const std::size_t first = line.find(' ');
  const std::size_t second = first == line.npos ? first : line.find(' ', first + 1);
  return second == line.npos ? std::nullopt : percentDecoded(line.substr(second + 1));
}

/// What stands behind the first of these line starts. None without a line end: what was cut short
/// may be half a path, which leads elsewhere.
std::optional<std::string_view> valueBehind(std::string_view lineStart, std::string_view lines) {
  const std::size_t start = lines.find(lineStart);
  if (start == lines.npos) return std::nullopt;
  const std::string_view value = lines.substr(start + lineStart.size());
  const std::size_t end = value.find('\n');
  return end == value.npos ? std::nullopt : std::optional(value.substr(0, end));
}

bool isDate(std::string_view text) {
  constexpr std::string_view shape = "nnnn-nn-nnTnn:nn:nn";
  return std::ranges::equal(text, shape, [](char c, char wanted) {
    return wanted == 'n' ? c >= '0' && c <= '9' : c == wanted;
  });
}

/// Whether a path can stand in a record. One that goes up again says nothing about where it ends.
bool isRecordable(std::string_view path) {
  return !path.empty() && path.find('\0') == path.npos &&
         ("/" + std::string(path) + "/").find("/../") == std::string::npos;
}

void forgetSize(int trash, const std::string& name) {
  const FileDescriptor file(
      openat(trash, sizesName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file) return;
  const std::expected<std::string, int> sizes = readToEnd(file.get(), longestSizes);
  if (!sizes) return;
  const std::string kept = directorySizesWithout(name, *sizes);
  if (kept.size() == sizes->size()) return;
  // A file of this name is what a crash left.
  unlinkat(trash, newSizesName, 0);
  if (!makeFile(trash, newSizesName, kept, Durability::unflushed)) return;
  if (renameat(trash, newSizesName, trash, sizesName) != 0) unlinkat(trash, newSizesName, 0);
}

}  // namespace

std::string trashRecordText(std::string_view path, std::time_t deletionDate) {
  std::tm local{};
  localtime_r(&deletionDate, &local);
  std::array<char, 32> date{};
  std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
  return "[Trash Info]\nPath=" + percentEncoded(path) + "\nDeletionDate=" + date.data() + "\n";
}

std::optional<std::string> pathInTrashRecord(std::string_view text) {
  constexpr std::string_view header = "[Trash Info]";
  if (!text.starts_with(header)) return std::nullopt;
  std::string_view lines = text.substr(header.size());
  if (const auto nextGroup = lines.find("\n["); nextGroup != lines.npos) {
    lines = lines.substr(0, nextGroup + 1);
  }
  const auto path = valueBehind("\nPath=", lines);
  const auto date = valueBehind("\nDeletionDate=", lines);
  if (!lines.starts_with('\n') || !path || !date || !isDate(*date)) return std::nullopt;
  const auto standsPlain = [](char c) { return c > ' ' && c <= '~'; };
  if (!std::ranges::all_of(*path, standsPlain)) return std::nullopt;
  auto decoded = percentDecoded(*path);
  return decoded && isRecordable(*decoded) ? std::move(decoded) : std::nullopt;
}

std::string directorySizesWithout(std::string_view name, std::string_view sizes) {
  std::string kept;
  while (!sizes.empty()) {
    const std::size_t end = sizes.find('\n');
    const std::string_view line = sizes.substr(0, end == sizes.npos ? end : end + 1);
    sizes.remove_prefix(line.size());
    if (nameInSizesLine(line.substr(0, std::min(line.find('\n'), line.size()))) != name) {
      kept += line;
    }
  }
  return kept;
}

std::expected<std::string, int> readTrashRecord(int infoDirectory, const std::string& name) {
  const FileDescriptor file(openat(infoDirectory, recordName(name).c_str(), recordFlags));
  const std::expected<std::string, int> text =
      file ? readToEnd(file.get(), longestRecord) : std::unexpected(errno);
  return text || !saysThatNoneIsThere(text.error()) ? text : "";
}

std::expected<FileDescriptor, int> makeTrashRecord(int infoDirectory, const std::string& name,
                                                   std::string_view text) {
  const std::string record = recordName(name);
  auto made = makeFileAtOnce(infoDirectory, record.c_str(), text);
  return made ? *std::move(made)
              : makeFile(infoDirectory, record.c_str(), text, Durability::flushed);
}

std::expected<HeldRecord, int> holdTrashRecord(int infoDirectory, const std::string& name) {
  const std::string record = recordName(name);
  FileDescriptor file(openat(infoDirectory, record.c_str(), recordFlags));
  if (!file) return std::unexpected(errno);
  if (isLockedByOthers(file)) return std::unexpected(EWOULDBLOCK);
  // Whoever had it locked until now may have removed it.
  EntryValues opened{};
  EntryValues present{};
  int code = readEntryValues(file.get(), "", opened);
  if (code == 0) code = readEntryValues(infoDirectory, record.c_str(), present);
  if (code == 0 && identityOf(opened) != identityOf(present)) code = EWOULDBLOCK;
  if (code != 0) return std::unexpected(code);
  auto text = readToEnd(file.get(), longestRecord);
  if (!text) return std::unexpected(text.error());
  return HeldRecord{std::move(file), *std::move(text)};
}

void removeTrashRecord(int infoDirectory, const std::string& name) {
  unlinkat(infoDirectory, recordName(name).c_str(), 0);
}

void forgetTrashedItem(int trashDirectory, int infoDirectory, const std::string& name,
                       std::string_view record) {
  const auto held = holdTrashRecord(infoDirectory, name);
  if (!held || held->text != record) return;
  removeTrashRecord(infoDirectory, name);
  forgetSize(trashDirectory, name);
}

}  // namespace tidemar
