#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace tidemar {

/// Reads the entries of open directories, one directory after the other, through two kernel buffers
/// that are made once. Order is the file system's; "." and ".." are left out.
class DirectoryReader {
 public:
  struct Entry {
    const char* name;     ///< Valid until the next call of `next` or `start`.
    std::uint64_t inode;  ///< As the directory has it: of a mount point the covered directory's.
    unsigned char type;   ///< DT_DIR and its like; DT_UNKNOWN where the file system doesn't tell.
  };

  DirectoryReader();

  /// Begins with the first entry of a directory. Borrows the descriptor until the last `next`.
  /// Throws std::system_error.
  void start(int directory);

  /// Whether the directory has an entry of this name: known without a further system call where the
  /// whole listing fits into one buffer, else none. Call it before the first `next`.
  std::optional<bool> lists(std::string_view name) const;

  /// The next entry, none at the end. Throws std::system_error.
  std::optional<Entry> next();

 private:
  struct Buffer {
    std::unique_ptr<std::byte[]> bytes;
    std::size_t size = 0;
    std::size_t position = 0;

    void fill(int directory);
    std::optional<Entry> take();
  };

  int _directory = -1;
  Buffer _current;
  Buffer _ahead;
};

}  // namespace tidemar
