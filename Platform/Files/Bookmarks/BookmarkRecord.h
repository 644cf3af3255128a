#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/Bookmarks/FileSystemIdentity.h"
#include "Platform/Files/Bookmarks/PersistentIdentity.h"

namespace tidemar {

/// What a bookmark remembers of a directory.
struct BookmarkRecord {
  std::string path;  ///< Absolute, without links, when the bookmark was made.
  FileSystemIdentity fileSystem;
  PersistentIdentity directory;

  friend bool operator==(const BookmarkRecord&, const BookmarkRecord&) = default;
};

/// The record as bytes that begin with a mark and the version of their format. The same on all
/// machines.
std::string encodeBookmark(const BookmarkRecord& record);

/// The record of such bytes; none for any others: of another version, cut short, with something
/// behind the end, or with a value that no record has.
std::optional<BookmarkRecord> decodeBookmark(std::string_view bytes);

/// Whether these bytes are a bookmark of exactly this open directory (not O_PATH), wherever it lies
/// now: a few questions about its descriptor and no search. Where a file system tells too little
/// of its directories to be sure, it is none. Throws PlatformError, made of `url`.
bool isBookmarkOf(std::string_view bookmark, int directory, const FileURL& url);

}  // namespace tidemar
