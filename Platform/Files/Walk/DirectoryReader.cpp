#include "Platform/Files/Walk/DirectoryReader.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <dirent.h>

namespace tidemar {
namespace {

constexpr std::size_t bufferSize = 32 * 1024;

}  // namespace

DirectoryReader::DirectoryReader() {
  _current.bytes = std::make_unique_for_overwrite<std::byte[]>(bufferSize);
  _ahead.bytes = std::make_unique_for_overwrite<std::byte[]>(bufferSize);
}

void DirectoryReader::Buffer::fill(int directory) {
  position = 0;
  size = 0;
  const ssize_t count = getdents64(directory, bytes.get(), bufferSize);
  if (count < 0) throw std::system_error(errno, std::generic_category());
  size = static_cast<std::size_t>(count);
}

std::optional<DirectoryReader::Entry> DirectoryReader::Buffer::take() {
  while (position < size) {
    const auto* record = reinterpret_cast<const dirent64*>(bytes.get() + position);
    position += record->d_reclen;
    const std::string_view name = record->d_name;
    if (name != "." && name != "..") return Entry{record->d_name, record->d_ino, record->d_type};
  }
  return std::nullopt;
}

void DirectoryReader::start(int directory) {
  _directory = directory;
  _current.fill(directory);
  // The end is known only by an empty answer, so reading ahead costs no call that wouldn't come
  // anyway.
  _ahead.fill(directory);
}

std::optional<bool> DirectoryReader::lists(std::string_view name) const {
  if (_ahead.size > 0) return std::nullopt;
  for (std::size_t position = 0; position < _current.size;) {
    const auto* record = reinterpret_cast<const dirent64*>(_current.bytes.get() + position);
    if (name == record->d_name) return true;
    position += record->d_reclen;
  }
  return false;
}

std::optional<DirectoryReader::Entry> DirectoryReader::next() {
  while (true) {
    if (auto entry = _current.take()) return entry;
    if (_ahead.size == 0) return std::nullopt;
    std::swap(_current, _ahead);
    _ahead.fill(_directory);
  }
}

}  // namespace tidemar
