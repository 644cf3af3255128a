#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/OpenFolder.h"
#include "TidemarCore/FileURL.h"

namespace tidemar::testing {

/// A directory of its own for one test, gone with all that lies in it at the end.
class TemporaryDirectory {
 public:
  /// Made under $TMPDIR, or under `parent` where one is given (the root of a test file system).
  explicit TemporaryDirectory(std::string_view parent = {});
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  /// Its path, without links.
  const FileURL& url() const noexcept { return _url; }
  std::string path(std::string_view relative = {}) const;
  FileURL url(std::string_view relative) const { return FileURL(path(relative)); }

 private:
  FileURL _url;
};

/// Makes the tree that `drawing` shows inside `root`, an entry a line, two blanks of indentation a
/// level:
///
///     old.txt            an empty file
///     notes.txt 12       a file of 12 bytes
///     build/             a directory
///       out.o 4096
///     latest -> build    a link
///     pipe |             a FIFO
///
/// A name in quotes may hold blanks and the escapes \n, \\, \" and \xHH.
void makeTree(const FileURL& root, std::string_view drawing);

/// Reads such a drawing: each of its entries with its level and the rest of its line.
void readDrawing(std::string_view drawing,
                 const std::function<void(std::size_t level, std::string_view entry)>& read);

/// Sets access and modification time of an entry, of a link its own, to this many seconds since
/// 1970.
void setModificationTime(const FileURL& url, double secondsSince1970);

void writeFile(const FileURL& url, std::string_view content);
std::string readFile(const FileURL& url);

/// Whether something lies there, a dangling link included.
bool exists(const FileURL& url);

/// The names of what lies in a directory; none where there is none.
std::set<std::string> namesIn(const FileURL& directory);

/// The code of the PlatformError that a call throws, 0 if it succeeds.
int codeOf(const std::function<void()>& call);

/// The `Path` of a Trash record, as it is written.
std::string pathIn(const FileURL& record);

/// Looks at an item as a run does and takes it out of its folder. Throws what stands in its way.
void removeItem(const FileURL& url);
FileURL trashItem(const FileURL& url);

/// One entry of a directory, with its values.
struct ListedEntry {
  FileURL url;
  ResourceValues values;
};

/// The entries of a directory as its reading gives them.
std::vector<ListedEntry> listDirectory(const FileURL& directory);

/// The values of one entry as a look at it gives them.
ResourceValues readResourceValues(const FileURL& url);

std::vector<std::string> readTagNames(const FileURL& directory);
void writeTagNames(const FileURL& directory, std::span<const std::string> tags);

std::string makeBookmark(const FileURL& directory);

/// Where a bookmark leads; see OpenedBookmark.
struct ResolvedBookmark {
  FileURL url;
  bool isStale = false;
  bool isReplacement = false;
};
ResolvedBookmark resolveBookmark(std::string_view bookmark);

}  // namespace tidemar::testing
