#include "Platform/Files/Bookmarks/BookmarkRecord.h"

#include <algorithm>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// A record with the input's bytes in all its parts.
BookmarkRecord recordOf(std::string_view input) {
  BookmarkRecord record;
  record.path = "/" + std::string(input.substr(0, std::min(input.find('\0'), std::size_t{65'535})));
  record.fileSystem.value = input.substr(0, 255);
  record.directory.inode = input.size();
  for (const char c : input.substr(0, 8))
    record.directory.inode = record.directory.inode << 8U | static_cast<unsigned char>(c);
  if (input.size() % 2 == 0) {
    record.directory.birthTime = {-static_cast<std::int64_t>(input.size()), 999'999'999};
  }
  if (input.size() % 3 == 0) {
    record.directory.handle = {-1, std::string(input.substr(0, longestFileHandle))};
  }
  return record;
}

}  // namespace

void check(std::string_view input) {
  const BookmarkRecord record = recordOf(input);
  const std::string bytes = encodeBookmark(record);
  require(decodeBookmark(bytes) == record, "what is encoded is decoded to the same record");
  require(!decodeBookmark(bytes + '\0'), "something behind the end is no bookmark");
  require(!decodeBookmark(bytes.substr(0, input.size() % bytes.size())),
          "what is cut short is no bookmark");

  const auto decoded = decodeBookmark(input);
  if (!decoded) return;
  require(encodeBookmark(*decoded) == input, "each record has one encoding");
  require(decoded->path.starts_with('/') && decoded->path.find('\0') == std::string::npos,
          "a bookmark's path is absolute");
  require(decoded->fileSystem.kind >= FileSystemIdentity::Kind::uuid &&
              decoded->fileSystem.kind <= FileSystemIdentity::Kind::type,
          "a file system has one of the known identities");
}

}  // namespace tidemar::fuzz
