#include "Platform/Files/Bookmarks/BookmarkSearch.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>
#include <memory>
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

#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Places/MountTable.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/UserDirectories.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* operation = "find";

// Of each of the two stages.
constexpr std::size_t mostEntries = 50'000;
constexpr std::chrono::milliseconds longestTime{250};

/// Of the places where the search begins, which the user may have arranged by links.
constexpr int rootFlags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
constexpr int openFlags = rootFlags | O_NOFOLLOW;

/// Opens a directory by a path below another one that leads through no link and no other mount.
FileDescriptor openBelow(int root, const std::string& path) {
  open_how how{};
  how.flags = openFlags;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV;
  return FileDescriptor(
      static_cast<int>(syscall(SYS_openat2, root, path.c_str(), &how, sizeof how)));
}

/// One breadth-first search through several directories at once, level by level. What can't be read
/// is passed over: the search answers whether the directory was met, not whether it exists.
class Search {
 public:
  explicit Search(const BookmarkRecord& bookmark) : _bookmark(bookmark), _url(bookmark.path) {}

  /// Adds a place to begin at, if it is there and on the bookmark's file system.
  void addRoot(const FileURL& url) {
    FileDescriptor directory(open(url.path().c_str(), rootFlags));
    EntryValues values{};
    if (!directory || !isOnFileSystem(directory)) return;
    if (readEntryValues(directory.get(), "", values) != 0) return;
    _roots.push_back({std::move(directory), identityOf(values).device});
    _pending.push_back({_roots.size() - 1, "."});
  }

  std::optional<FileURL> run() {
    const Clock::time_point deadline = Clock::now() + longestTime;
    for (; !_pending.empty() && _entries < mostEntries && Clock::now() < deadline;
         _pending.pop_front()) {
      if (auto found = look(_pending.front())) return found;
    }
    return std::nullopt;
  }

 private:
  struct Root {
    FileDescriptor directory;
    std::uint64_t device;
  };
  struct Place {
    std::size_t root;
    std::string path;  ///< From the root.
  };

  std::optional<FileURL> look(const Place& place) {
    const Root& root = _roots[place.root];
    const FileDescriptor directory = openBelow(root.directory.get(), place.path);
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

  std::optional<FileURL> lookThrough(const Place& place, const FileDescriptor& directory) {
    try {
      _reader.start(directory.get());
      while (const auto entry = _reader.next()) {
        if (++_entries >= mostEntries) return std::nullopt;
        if (entry->type != DT_DIR && entry->type != DT_UNKNOWN) continue;
        if (entry->inode == _bookmark.directory.inode) {
          const FileDescriptor candidate(openat(directory.get(), entry->name, openFlags));
          if (auto found = confirmed(candidate)) return found;
        }
        add(place, entry->name);
      }
    } catch (const std::system_error&) {
      // An unreadable rest of a directory is one of the places that aren't searched.
    }
    return std::nullopt;
  }

  void add(const Place& parent, const char* name) {
    std::string path = parent.path == "." ? name : parent.path + "/" + name;
    if (liesInTrash(FileURL(path))) return;
    _pending.push_back({parent.root, std::move(path)});
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
      if (isOnFileSystem(directory) && !liesInTrash(url)) return url;
    } catch (const PlatformError&) {
      // It has gone since it was opened.
    }
    return std::nullopt;
  }

  const BookmarkRecord& _bookmark;
  FileURL _url;
  std::vector<Root> _roots;
  std::deque<Place> _pending;
  std::set<std::pair<std::uint64_t, std::uint64_t>> _visited;
  std::size_t _entries = 0;
  DirectoryReader _reader;
};

/// The top of the mount in which the old place lay, told by the nearest directory above it that
/// still exists.
std::optional<FileURL> mountRootAbove(const FileURL& old) {
  FileURL url = old;
  while (url.path() != "/") {
    url = url.deletingLastPathComponent();
    const FileDescriptor directory(open(url.path().c_str(), rootFlags));
    if (!directory) continue;
    try {
      const FileDescriptor top = openMountRoot(directory.get(), old, operation);
      return pathOfDescriptor(top.get(), old, operation);
    } catch (const PlatformError&) {
      return std::nullopt;  // One place fewer to search.
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<FileURL> searchForDirectory(const BookmarkRecord& bookmark) {
  const bool isRecognisable = bookmark.directory.handle || bookmark.directory.birthTime;
  if (!isRecognisable) return std::nullopt;

  Search near(bookmark);
  const FileURL parent = FileURL(bookmark.path).deletingLastPathComponent();
  near.addRoot(parent);
  near.addRoot(parent.deletingLastPathComponent());
  for (const UserDirectory& directory : userDirectories())
    near.addRoot(directory.url);
  near.addRoot(StandardDirectories::home());
  if (auto found = near.run()) return found;

  Search far(bookmark);
  if (const auto root = mountRootAbove(FileURL(bookmark.path))) far.addRoot(*root);
  // A drive can be mounted in another place than it was. Only drives: to ask a network file system
  // for its identity may take as long as its server likes.
  for (const Mount& mount : readMountTable()) {
    if (mount.source.starts_with("/dev/")) far.addRoot(FileURL(mount.mountPoint));
  }
  return far.run();
}

}  // namespace tidemar
