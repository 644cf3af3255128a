#include "Platform/Files/Walk/HiddenList.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/ReadWrite.h"

namespace tidemar {
namespace {

constexpr std::size_t largestList = 1024 * 1024;

[[noreturn]] void fail(int code) {
  throw std::system_error(code, std::generic_category());
}

}  // namespace

HiddenList HiddenList::ofDirectory(int directory) {
  // Opening for reading could wait on a FIFO or touch a device, so the type is looked at first.
  struct stat type {};
  if (fstatat(directory, ".hidden", &type, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno == ENOENT) return {};
    fail(errno);
  }
  if (!S_ISREG(type.st_mode)) return {};

  const FileDescriptor file(
      openat(directory, ".hidden", O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file) fail(errno);
  const auto content = readToEnd(file.get(), largestList);
  if (!content) fail(content.error());
  return parse(*content);
}

HiddenList HiddenList::parse(std::string_view content) {
  HiddenList list;
  for (std::size_t start = 0; start < content.size();) {
    const std::size_t end = std::min(content.find('\n', start), content.size());
    if (end > start) list._names.emplace_back(content.substr(start, end - start));
    start = end + 1;
  }
  std::ranges::sort(list._names);
  return list;
}

const HiddenList& HiddenListReader::list(int directory) {
  EntryValues values{};
  const int code = readEntryValues(directory, ".hidden", values);
  if (code != 0 && code != ENOENT) fail(code);
  const State present = code == 0 ? State{entryIdentity(values), changeTime(values)} : State{};
  if (_state == present) return _list;

  const Timestamp now = clockOfFiles();
  _state.reset();
  _list = HiddenList::ofDirectory(directory);
  // Another change within the same step of the clock would leave no trace.
  if (present.change < now) _state = present;
  return _list;
}

bool HiddenList::hides(std::string_view name) const {
  if (name.starts_with('.')) return true;
  return std::ranges::binary_search(_names, name, {},
                                    [](const auto& text) { return std::string_view(text); });
}

}  // namespace tidemar
