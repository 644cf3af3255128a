#include "Platform/Files/Changes/PrivateDirectory.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <random>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/DirectoryReader.h"

namespace tidemar {
namespace {

constexpr std::string_view hexadecimalDigits = "0123456789abcdef";
constexpr std::size_t numberSize = 16;
constexpr const char* markName = "tidemar";

/// A name that is taken is met by the next one; so many in a row are no chance.
constexpr int mostAttempts = 8;

std::string_view prefixOf(PrivateDirectory::Kind kind) noexcept {
  return kind == PrivateDirectory::Kind::taken ? ".tidemar-taken-" : ".tidemar-copy-";
}

std::string newName(PrivateDirectory::Kind kind) {
  std::random_device random;
  std::uint64_t number = (std::uint64_t{random()} << 32U) | random();
  std::string name(prefixOf(kind));
  for (std::size_t i = 0; i < numberSize; ++i, number >>= 4U)
    name += hexadecimalDigits[number & 0xFU];
  return name;
}

}  // namespace

bool PrivateDirectory::isName(std::string_view name, Kind kind) noexcept {
  const std::string_view prefix = prefixOf(kind);
  return name.size() == prefix.size() + numberSize && name.starts_with(prefix) &&
         std::ranges::all_of(name.substr(prefix.size()),
                             [](char c) { return hexadecimalDigits.contains(c); });
}

std::expected<PrivateDirectory, int> PrivateDirectory::make(int folder, Kind kind) {
  int code = EEXIST;
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    const std::string name = newName(kind);
    if (mkdirat(folder, name.c_str(), 0700) != 0) {
      code = errno;
      if (code == EEXIST) continue;
      return std::unexpected(code);
    }
    auto made = open(folder, name);
    code = made ? 0 : made.error();
    // Someone else's directory may have come to lie there since it was made.
    if (code == 0 && (made->_isMarked || made->_placeCount > 0)) code = ENOTEMPTY;
    if (code == 0) code = made->mark();
    if (code == 0) return made;
    unlinkat(folder, name.c_str(), AT_REMOVEDIR);
  }
  return std::unexpected(code);
}

std::expected<PrivateDirectory, int> PrivateDirectory::openLeft(int folder,
                                                                const std::string& name) {
  auto left = open(folder, name);
  if (!left || left->_isMarked) return left;
  // Its process ended before it was marked, and so before anything was laid into it.
  unlinkat(folder, name.c_str(), AT_REMOVEDIR);
  return std::unexpected(EINVAL);
}

/// Answers EINVAL for one that isn't surely the program's own.
std::expected<PrivateDirectory, int> PrivateDirectory::open(int folder, const std::string& name) {
  FileDescriptor opened;
  if (const int code = openDirectory(folder, name.c_str(), opened); code != 0)
    return std::unexpected(code);
  EntryValues values{};
  if (const int code = readEntryValues(opened.get(), "", values); code != 0)
    return std::unexpected(code);
  if (values.stx_uid != geteuid() || (values.stx_mode & 0777U) != 0700U)
    return std::unexpected(EINVAL);
  if (flock(opened.get(), LOCK_EX | LOCK_NB) != 0) return std::unexpected(errno);
  PrivateDirectory directory(folder, name, std::move(opened));
  if (const int code = directory.readContents(); code != 0) return std::unexpected(code);
  return directory;
}

PrivateDirectory::~PrivateDirectory() {
  if (!_directory || !_isMarked) return;
  while (_placeCount > 0 &&
         unlinkat(_directory.get(), std::to_string(_placeCount - 1).c_str(), AT_REMOVEDIR) == 0)
    --_placeCount;
  // As long as something lies here the mark is what tells the next start about it.
  if (_placeCount > 0) return;
  unlinkat(_directory.get(), markName, 0);
  unlinkat(_folder, _name.c_str(), AT_REMOVEDIR);
}

int PrivateDirectory::mark() {
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  if (!FileDescriptor(openat(_directory.get(), markName, flags, 0600))) return errno;
  _isMarked = true;
  return 0;
}

/// Finds the mark and the places. Answers EINVAL for a directory with anything else in it.
int PrivateDirectory::readContents() {
  std::size_t highest = 0;
  try {
    DirectoryReader reader;
    reader.start(_directory.get());
    while (const auto entry = reader.next()) {
      const std::string_view name = entry->name;
      std::size_t number = 0;
      std::from_chars(name.data(), name.data() + name.size(), number);
      if (name == markName) {
        _isMarked = true;
      } else if (name == std::to_string(number)) {
        highest = std::max(highest, number);
        ++_placeCount;
      } else {
        return EINVAL;
      }
    }
  } catch (const std::system_error& error) {
    return error.code().value();
  }
  const bool isComplete = _placeCount == 0 || (_isMarked && highest == _placeCount - 1);
  return isComplete ? 0 : EINVAL;
}

int PrivateDirectory::makePlace(std::size_t number) {
  for (; _placeCount <= number; ++_placeCount) {
    if (mkdirat(_directory.get(), std::to_string(_placeCount).c_str(), 0700) != 0) return errno;
  }
  return 0;
}

std::string PrivateDirectory::inPlace(std::size_t number, std::string_view name) {
  std::string path = std::to_string(number);
  path += '/';
  return path += name;
}

}  // namespace tidemar
