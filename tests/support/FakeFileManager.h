#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/FileManager.h"

namespace tidemar::testing {

/// A disk in memory that keeps the contract of `FileManager` and its folders, writes down every
/// operation and can be told to fail. Its clock stands still: nothing that happens here gives an
/// entry another date.
class FakeFileManager final : public FileManager {
 public:
  struct Entry;

  FakeFileManager();
  ~FakeFileManager() override;

  // The disk.

  /// Makes the tree that `drawing` shows, an entry a line, two blanks of indentation a level; the
  /// lines without indentation are absolute paths, whose parents are made as needed.
  ///
  ///     /home/ada/Downloads/        a directory: its name ends with a slash
  ///       notes.txt 12 @500         a file of 12 bytes, added and changed at 500 seconds
  ///       build/ 4 added=7 changed=9
  ///       Tool.app/ package @5
  ///       secret hidden             hidden by flag
  ///       latest -> /home/ada       a link
  ///       locked/ unreadable        can't be opened, or as a file: its values can't be read
  ///
  /// An entry without a date word has no dates, one without a number no size.
  void draw(std::string_view drawing);

  bool exists(const std::string& path) const;

  /// The names in a directory, in listing order, joined by a blank.
  std::string names(const std::string& path) const;

  /// The values of an entry, to be changed at will.
  ResourceValues& values(const std::string& path);
  std::vector<std::string>& tags(const std::string& path);

  /// What a person or another program does: unlike the operations below these are not written
  /// down.
  void rename(const std::string& from, const std::string& to) const;
  void erase(const std::string& path) const;

  // Facts, to be changed at will.

  VolumeCapacity capacity{500, 1000};
  std::vector<FileURL> volumes;
  std::vector<FileURL> systemDirectories;
  FileURL home{"/home/ada"};
  Date boot{0};
  bool bookmarksAreStale = false;
  bool binTellsPlace = true;     ///< False: `trashItem` succeeds without an answer.
  bool binKnowsItsItems = true;  ///< False: no record in the Bin is that of the item asked for.

  /// Where trashed items go; made when needed.
  static constexpr const char* binPath = "/home/ada/Trash";

  // Watching and disturbing. An operation's line is its word and its path, such as "trash /f/a",
  // "move /Trash/a to /f/a", "tags /f".

  /// Every operation so far, those that failed included.
  std::vector<std::string>& operations() noexcept { return _operations; }

  /// The lines of those operations that change the disk.
  std::vector<std::string> changes() const;

  /// Lets each operation of this line fail from now on.
  void fail(const std::string& line, int code);

  /// Runs something just before the next operation of this line; where it is called again, before
  /// the one after that.
  void before(const std::string& line, std::function<void()> action);

  // FileManager.

  std::string canonicalPath(const FileURL& url) const override;
  std::unique_ptr<OpenFolder> openFolder(const FileURL& url) const override;
  OpenedBookmark openBookmark(std::string_view bookmark) const override;
  VolumeCapacity volumeCapacity(const FileURL& url) const override {
    return fact("capacity " + url.path(), capacity);
  }
  std::vector<FileURL> mountedVolumeURLs() const override { return fact("volumes", volumes); }
  FileURL homeDirectoryForCurrentUser() const override { return fact("home", home); }
  std::vector<FileURL> systemDirectoryURLs() const override {
    return fact("systemDirectories", systemDirectories);
  }
  Date bootTime() const override { return fact("bootTime", boot); }

 private:
  class Folder;
  class Binned;

  void begin(const std::string& line, const FileURL& url = {}) const;
  template <class Fact>
  const Fact& fact(const std::string& line, const Fact& value) const {
    begin(line);
    return value;
  }
  Entry* find(const std::string& path) const;
  Entry* withIdentity(std::uint64_t identity) const;
  Entry& existing(const std::string& operation, const FileURL& url) const;

  /// Where a link leads that lies there; any other path as it is.
  std::string followed(const FileURL& url) const;

  /// What lies there, made with its parents where it is missing.
  Entry& make(const std::string& path) const;

  // The operations of a FileManager are const because they change the disk and not the manager;
  // here the disk is held.
  mutable std::list<Entry> _entries;
  mutable std::vector<std::string> _operations;
  std::map<std::string, int> _failures;
  mutable std::multimap<std::string, std::function<void()>> _hooks;
  mutable std::uint64_t _lastNumber = 0;
};

}  // namespace tidemar::testing
