#include "Platform/Files/Bookmarks/BookmarkSearch.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <iterator>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Bookmarks/SearchPlaces.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* operation = "find";

// The bounds of each of the two stages. Entries aren't counted: to read past one costs a fraction
// of a microsecond, while each directory costs four system calls, and where it isn't in memory a
// wait for the disk.
constexpr std::size_t mostDirectories = 20'000;
constexpr std::chrono::milliseconds longestTime{250};

// The places in which the search begins, and a few directories below them, are read even if the
// machine has little time for us: a directory that was renamed beside hundreds of thousands of
// files is found there.
constexpr std::size_t nearestDirectories = 50;
constexpr std::chrono::seconds longestTimeForNearest{5};

// Keeps what the search holds in memory within 20 MB.
constexpr std::size_t longestPath = 1024;

/// Opens a directory by a path below another one that leads through no link and no other mount.
FileDescriptor openBelow(int directory, const char* path) {
  open_how how{};
  how.flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV;
  return FileDescriptor(static_cast<int>(syscall(SYS_openat2, directory, path, &how, sizeof how)));
}

/// One breadth-first search through several directories at once, level by level. What can't be read
/// is passed over: the search answers whether the directory was met, not whether it exists.
class Search {
 public:
  Search(const BookmarkRecord& bookmark, const SearchPlaces& places)
      : _bookmark(bookmark), _places(places), _url(bookmark.path) {}

  /// One stage: begins at these places, passes by what an earlier stage has read, and ends with
  /// what that one had no time for.
  std::optional<FileURL> run(const std::vector<FileURL>& beginnings) {
    _start = Clock::now();
    _opened = 0;
    std::deque<Place> leftByEarlierStage = std::exchange(_pending, {});
    for (const FileURL& url : beginnings)
      addRoot(url);
    if (auto found = lookAround()) return found;
    std::ranges::move(leftByEarlierStage, std::back_inserter(_pending));
    return lookAround();
  }

 private:
  struct Root {
    FileDescriptor directory;
    std::string path;
    std::uint64_t device;
  };
  struct Place {
    std::size_t root;
    std::string path;  ///< From the root.
  };

  /// Adds a place to begin at, if it is there and on the bookmark's file system.
  void addRoot(const FileURL& url) {
    FileDescriptor directory = _places.open(url);
    EntryValues values{};
    if (!directory || !isOnFileSystem(directory)) return;
    if (readEntryValues(directory.get(), "", values) != 0) return;
    try {
      const FileURL place = pathOfDescriptor(directory.get(), _url, operation);
      _roots.push_back({std::move(directory), place.path() == "/" ? "" : place.path(),
                        identityOf(values).device});
      _pending.push_back({_roots.size() - 1, "."});
    } catch (const PlatformError&) {
      // It is out of reach by any path.
    }
  }

  bool isOutOfTime() const {
    const auto time = Clock::now() - _start;
    return time > longestTimeForNearest || (time > longestTime && _opened > nearestDirectories);
  }

  std::optional<FileURL> lookAround() {
    for (; !_pending.empty() && _opened < mostDirectories && !isOutOfTime(); _pending.pop_front()) {
      if (auto found = look(_pending.front())) return found;
    }
    return std::nullopt;
  }

  std::optional<FileURL> look(const Place& place) {
    ++_opened;
    const Root& root = _roots[place.root];
    const FileDescriptor directory = openBelow(root.directory.get(), place.path.c_str());
    EntryValues values{};
    if (!directory || readEntryValues(directory.get(), "", values) != 0) return std::nullopt;
    // The entry of a subvolume shows another inode number than its root, so each directory that is
    // opened is compared too.
    if (values.stx_ino == _bookmark.directory.inode) {
      if (auto found = confirmed(directory)) return found;
    }
    const DirectoryIdentity identity = identityOf(values);
    if (identity.device != root.device) return std::nullopt;
    if (!_visited.emplace(identity.device, identity.inode).second) return std::nullopt;
    return lookThrough(place, directory);
  }

  std::optional<FileURL> lookThrough(const Place& parent, const FileDescriptor& directory) {
    constexpr std::size_t entriesPerLookAtTheClock = 1024;
    try {
      _reader.start(directory.get());
      for (std::size_t count = 1; const auto entry = _reader.next(); ++count) {
        if (count % entriesPerLookAtTheClock == 0 && isOutOfTime()) return std::nullopt;
        if (entry->type != DT_DIR && entry->type != DT_UNKNOWN) continue;
        const bool isCandidate = entry->inode == _bookmark.directory.inode;
        if (!isCandidate && _opened + _pending.size() >= mostDirectories) continue;
        std::string path = parent.path == "." ? entry->name : parent.path + "/" + entry->name;
        const std::string wholePath = _roots[parent.root].path + "/" + path;
        // Even a way that goes no further than to an automount can set it off.
        if (_places.isMountPoint(wholePath) || liesInTrash(FileURL(wholePath))) continue;
        if (isCandidate) {
          if (auto found = confirmed(openBelow(directory.get(), entry->name))) return found;
        }
        if (path.size() <= longestPath) _pending.push_back({parent.root, std::move(path)});
      }
    } catch (const std::system_error&) {
      // An unreadable rest of a directory is one of the places that aren't searched.
    }
    return std::nullopt;
  }

  bool isOnFileSystem(const FileDescriptor& directory) const {
    try {
      return fileSystemIdentity(directory.get(), _url, operation) == _bookmark.fileSystem;
    } catch (const PlatformError&) {
      return false;
    }
  }

  std::optional<FileURL> confirmed(const FileDescriptor& directory) const {
    if (!directory) return std::nullopt;
    try {
      const PersistentIdentity identity = persistentIdentity(directory.get(), _url, operation);
      if (!isSameDirectory(identity, _bookmark.directory)) return std::nullopt;
      FileURL url = pathOfDescriptor(directory.get(), _url, operation);
      if (!liesInTrash(url)) return url;
    } catch (const PlatformError&) {
      // It has gone since it was opened.
    }
    return std::nullopt;
  }

  const BookmarkRecord& _bookmark;
  const SearchPlaces& _places;
  const FileURL _url;
  Clock::time_point _start;
  std::vector<Root> _roots;
  std::deque<Place> _pending;
  std::set<std::pair<std::uint64_t, std::uint64_t>> _visited;
  std::size_t _opened = 0;
  DirectoryReader _reader;
};

}  // namespace

std::optional<FileURL> searchForDirectory(const BookmarkRecord& bookmark) {
  const bool isRecognisable = bookmark.directory.handle || bookmark.directory.birthTime;
  if (!isRecognisable) return std::nullopt;

  const SearchPlaces places{FileURL(bookmark.path)};
  Search search(bookmark, places);
  if (auto found = search.run(places.near())) return found;
  return search.run(places.far());
}

}  // namespace tidemar
