#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

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

}  // namespace tidemar::testing
