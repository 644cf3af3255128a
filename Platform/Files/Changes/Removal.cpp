#include "Platform/Files/Changes/Removal.h"

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Changes/TreeBoundaries.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/DirectoryStack.h"
#include "Platform/Files/Walk/TreeWalk.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* operation = "delete";

/// Whether a directory lets its entries go, as far as that shows beforehand.
struct Holder {
  int refusal = 0;             ///< An errno value that holds for every entry; 0 for none.
  bool keepsOfOthers = false;  ///< Only what is this user's own may go.
};

/// Of a directory by its name in another one, or with an empty name of the open one itself.
Holder holderOf(int directory, const char* name, const EntryValues& values) {
  constexpr int flags = AT_EACCESS | AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW;
  const uid_t user = geteuid();
  const bool isSticky = (values.stx_mode & S_ISVTX) != 0;
  return {.refusal = faccessat(directory, name, W_OK | X_OK, flags) == 0 ? 0 : errno,
          .keepsOfOthers = isSticky && user != 0 && values.stx_uid != user};
}

/// Why an entry may not leave the directory that it lies in; 0 if nothing speaks against it.
int whatKeeps(const EntryValues& entry, const Holder& holder) {
  if ((entry.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0) return EPERM;
  if (holder.refusal != 0) return holder.refusal;
  return holder.keepsOfOthers && entry.stx_uid != geteuid() ? EPERM : 0;
}

/// Looks through a tree for what would stop its deletion half-way.
class Survey : public WalkHandler {
 public:
  explicit Survey(Holder root) : _holders{root} {}

  void entry(const WalkedEntry& entry) override {
    if (_obstacle) return;
    // What lies in a directory follows it directly, so the way down ends in the entry's own.
    _holders.resize(entry.depth);
    if (const int code = whatKeeps(entry.values, _holders.back()); code != 0) _obstacle = code;
    if (entry.descriptor >= 0) _holders.push_back(holderOf(entry.descriptor, "", entry.values));
  }
  void failed(const PlatformError& error) override {
    if (!_obstacle) _obstacle = error.code();
  }
  std::optional<int> obstacle() const { return _obstacle; }

 private:
  std::vector<Holder> _holders;  ///< The directories on the way down, the root first.
  std::optional<int> _obstacle;
};

/// Deletes what lies in a directory, innermost first, with the walk's bounds on descriptors and
/// stack.
class TreeRemoval {
 public:
  explicit TreeRemoval(const FileURL& root) : _stack(root) {}

  void run(int parent, const char* name) {
    enter(parent, name);
    while (true) {
      auto& pending = _stack.top().pending;
      if (!pending.empty()) {
        const std::string child = std::move(pending.back().name);
        pending.pop_back();
        enter(_stack.top().descriptor.get(), child.c_str());
        continue;
      }
      if (_stack.depth() == 1) break;
      const std::string emptied = _stack.top().name;
      if (const int code = _stack.pop(); code != 0) fail(_stack.url(), code);
      unlinkEntry(emptied.c_str(), AT_REMOVEDIR);
    }
  }

 private:
  void enter(int parent, const char* name) {
    const FileURL url = _stack.isEmpty() ? _stack.rootURL() : _stack.url(name);
    OpenDirectory directory;
    directory.name = name;
    EntryValues parentValues{};
    EntryValues values{};
    int code = readEntryValues(parent, "", parentValues);
    if (code == 0) code = openDirectory(parent, name, directory.descriptor);
    if (code == 0) code = readEntryValues(directory.descriptor.get(), "", values);
    // A mount that was made after the survey must stop the deletion here.
    if (code == 0 && isBoundary(values, identityOf(parentValues))) code = EXDEV;
    if (code != 0) fail(url, code);
    directory.identity = identityOf(values);
    _stack.push(std::move(directory));
    emptyTop();
  }

  /// Reads until a whole pass meets nothing but directories, since a listing that shrinks while it
  /// is read may leave entries out.
  void emptyTop() {
    try {
      while (deleteFilesOfTop())
        lseek(_stack.top().descriptor.get(), 0, SEEK_SET);
    } catch (const std::system_error& error) {
      fail(_stack.url(), error.code().value());
    }
  }

  bool deleteFilesOfTop() {
    OpenDirectory& directory = _stack.top();
    directory.pending.clear();
    bool hasDeleted = false;
    _reader.start(directory.descriptor.get());
    while (const auto entry = _reader.next()) {
      if (isDirectoryEntry(*entry)) {
        directory.pending.push_back({entry->name});
      } else {
        // An entry that is listed and isn't there must not have the pass repeated for ever.
        hasDeleted = unlinkEntry(entry->name, 0) || hasDeleted;
      }
    }
    return hasDeleted;
  }

  bool isDirectoryEntry(const DirectoryReader::Entry& entry) {
    if (entry.type != DT_UNKNOWN) return entry.type == DT_DIR;
    EntryValues values{};
    const int code = readEntryValues(_stack.top().descriptor.get(), entry.name, values);
    if (code != 0) fail(_stack.url(entry.name), code);
    return isDirectory(values);
  }

  /// Answers false for an entry that was gone already.
  bool unlinkEntry(const char* name, int flags) {
    if (unlinkat(_stack.top().descriptor.get(), name, flags) == 0) return true;
    if (errno == ENOENT) return false;
    fail(_stack.url(name), errno);
  }

  [[noreturn]] static void fail(const FileURL& url, int code) {
    throw PlatformError(operation, url, code);
  }

  DirectoryReader _reader;
  DirectoryStack _stack;
};

}  // namespace

void removeItem(const FileURL& url) {
  const FileDescriptor parent = openParent(url, operation);
  const std::string name(url.lastPathComponent());
  refuseMounts(parent.get(), name, url, operation);
  refuseFixedPlaces(parent.get(), name, url, operation);

  EntryValues parentValues{};
  EntryValues values{};
  int code = readEntryValues(parent.get(), "", parentValues);
  if (code == 0) code = readEntryValues(parent.get(), name.c_str(), values);
  if (code == 0) code = whatKeeps(values, holderOf(parent.get(), "", parentValues));
  if (code != 0) throw PlatformError(operation, url, code);

  if (isDirectory(values)) {
    Survey survey(holderOf(parent.get(), name.c_str(), values));
    TreeWalk(url, survey).run(parent.get(), name.c_str());
    if (survey.obstacle() == EXDEV) refuseBoundary(url, operation);
    if (survey.obstacle()) throw PlatformError(operation, url, *survey.obstacle());
    TreeRemoval(url).run(parent.get(), name.c_str());
  }
  if (unlinkat(parent.get(), name.c_str(), isDirectory(values) ? AT_REMOVEDIR : 0) != 0) {
    throw PlatformError(operation, url, errno);
  }
}

}  // namespace tidemar
