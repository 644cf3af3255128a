#include "Platform/Files/Bookmarks/BookmarkRecord.h"

#include <bit>
#include <concepts>
#include <cstddef>

namespace tidemar {
namespace {

// mark, version, path, kind and value of the file system, inode, birth time, handle. Integers are
// little-endian; strings begin with their size; what can be missing begins with 0 or 1.
constexpr std::string_view mark = "TideMark";
constexpr std::uint8_t version = 1;

constexpr std::size_t longestPath = 64 * 1024;
constexpr std::size_t longestFileSystemValue = 255;

template <std::unsigned_integral Integer>
void append(std::string& bytes, Integer value) {
  for (std::size_t i = 0; i < sizeof value; ++i) {
    bytes += static_cast<char>(static_cast<unsigned char>(value >> (8 * i)));
  }
}

void append(std::string& bytes, std::string_view text) {
  append(bytes, static_cast<std::uint32_t>(text.size()));
  bytes += text;
}

/// Takes values off the front of bytes that can't be trusted. Once something is missing or out of
/// range, it has failed for good and all further values are empty.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : _rest(bytes) {}

  template <std::unsigned_integral Integer>
  Integer integer() {
    const std::string_view bytes = take(sizeof(Integer));
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return static_cast<Integer>(value);
  }

  std::string text(std::size_t longest) {
    const std::size_t size = integer<std::uint32_t>();
    require(size <= longest);
    return std::string(take(size));
  }

  bool isPresent() {
    const auto flag = integer<std::uint8_t>();
    require(flag <= 1);
    return flag == 1;
  }

  void require(bool condition) {
    if (condition) return;
    _hasFailed = true;
    _rest = {};
  }

  bool hasEndedWell() const { return !_hasFailed && _rest.empty(); }

 private:
  std::string_view take(std::size_t size) {
    require(size <= _rest.size());
    if (_hasFailed) return {};
    const std::string_view taken = _rest.substr(0, size);
    _rest.remove_prefix(size);
    return taken;
  }

  std::string_view _rest;
  bool _hasFailed = false;
};

}  // namespace

std::string encodeBookmark(const BookmarkRecord& record) {
  const PersistentIdentity& directory = record.directory;
  std::string bytes(mark);
  append(bytes, version);
  append(bytes, record.path);
  append(bytes, static_cast<std::uint8_t>(record.fileSystem.kind));
  append(bytes, record.fileSystem.value);
  append(bytes, directory.inode);
  append(bytes, static_cast<std::uint8_t>(directory.birthTime ? 1 : 0));
  if (directory.birthTime) {
    append(bytes, std::bit_cast<std::uint64_t>(directory.birthTime->seconds));
    append(bytes, directory.birthTime->nanoseconds);
  }
  append(bytes, static_cast<std::uint8_t>(directory.handle ? 1 : 0));
  if (directory.handle) {
    append(bytes, std::bit_cast<std::uint32_t>(directory.handle->type));
    append(bytes, directory.handle->bytes);
  }
  return bytes;
}

std::optional<BookmarkRecord> decodeBookmark(std::string_view bytes) {
  if (!bytes.starts_with(mark)) return std::nullopt;
  Reader reader(bytes.substr(mark.size()));
  reader.require(reader.integer<std::uint8_t>() == version);

  BookmarkRecord record;
  record.path = reader.text(longestPath);
  reader.require(record.path.starts_with('/') && record.path.find('\0') == record.path.npos);

  const auto kind = reader.integer<std::uint8_t>();
  reader.require(kind >= 1 && kind <= 3);
  record.fileSystem.kind = static_cast<FileSystemIdentity::Kind>(kind);
  record.fileSystem.value = reader.text(longestFileSystemValue);

  record.directory.inode = reader.integer<std::uint64_t>();
  if (reader.isPresent()) {
    BirthTime& time = record.directory.birthTime.emplace();
    time.seconds = std::bit_cast<std::int64_t>(reader.integer<std::uint64_t>());
    time.nanoseconds = reader.integer<std::uint32_t>();
  }
  if (reader.isPresent()) {
    FileHandle& handle = record.directory.handle.emplace();
    handle.type = std::bit_cast<std::int32_t>(reader.integer<std::uint32_t>());
    handle.bytes = reader.text(longestFileHandle);
  }
  if (!reader.hasEndedWell()) return std::nullopt;
  return record;
}

bool isBookmarkOf(std::string_view bookmark, int directory, const FileURL& url) {
  constexpr const char* operation = "find";
  const std::optional<BookmarkRecord> remembered = decodeBookmark(bookmark);
  return remembered &&
         isSameDirectory(persistentIdentity(directory, url, operation), remembered->directory) &&
         fileSystemIdentity(directory, url, operation) == remembered->fileSystem;
}

}  // namespace tidemar
