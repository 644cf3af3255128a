#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tidemar {

/// Where a file lies: its path as the file system's own bytes, which need not be UTF-8 and are
/// never changed. Touches no file. An immutable value; copies share the path and are cheap to hand
/// to another thread.
///
/// Slashes at the end are dropped, except for the root. A default-made URL has the empty path,
/// which names nothing.
class FileURL {
 public:
  FileURL() noexcept = default;
  explicit FileURL(std::string path);
  FileURL(const FileURL& other) noexcept;
  FileURL(FileURL&& other) noexcept;
  FileURL& operator=(FileURL other) noexcept;
  ~FileURL();

  std::string path() const;

  /// The bytes behind the last slash; "/" for the root, "" for the empty path. Lives as long as any
  /// copy of this URL.
  std::string_view lastPathComponent() const noexcept;

  FileURL appendingPathComponent(std::string_view component) const;

  /// The URL without its last path component; the root is its own parent.
  FileURL deletingLastPathComponent() const;

  friend bool operator==(const FileURL& a, const FileURL& b);
  friend std::strong_ordering operator<=>(const FileURL& a, const FileURL& b) {
    return a.path() <=> b.path();
  }

 private:
  friend class EntryURLs;
  struct Block;

  static std::unique_ptr<Block> makeBlock(std::string folder, std::size_t size);
  std::string_view folder() const noexcept;
  std::string_view text() const noexcept;

  // Two words, since a folder may have a million entries.
  Block* _block = nullptr;  ///< Counts the URLs that point into it.
  std::uint32_t _start = 0;
  std::uint32_t _size = 0;
};

/// Makes URLs of many entries of one folder: their names lie one behind the other in few blocks of
/// memory, and the folder's path is kept once in each block.
class EntryURLs {
 public:
  explicit EntryURLs(const FileURL& folder);

  /// The URL of an entry by its name, which has no slash.
  FileURL make(std::string_view name);

 private:
  std::string _folder;  ///< With a slash at its end.
  FileURL _last;        ///< Keeps the block that is being filled, from its end on.
  std::size_t _blockSize = 0;
};

/// Whether a name can be that of an entry of a directory.
bool isEntryName(std::string_view name) noexcept;

}  // namespace tidemar

template <>
struct std::hash<tidemar::FileURL> {
  std::size_t operator()(const tidemar::FileURL& url) const {
    return std::hash<std::string>{}(url.path());
  }
};
