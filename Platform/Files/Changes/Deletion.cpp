#include "Platform/Files/Changes/Deletion.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/ReadLease.h"
#include "Platform/Files/Descriptors/Rename.h"

namespace tidemar {
namespace {

/// How many of the innermost directories stay open.
constexpr std::size_t openLevels = 16;

bool isLackOfSpace(int code) {
  return code == ENOSPC || code == EDQUOT;
}

/// Of a directory that is being emptied, whose modification moves.
bool isSameDirectory(const EntryValues& values, const EntryIdentity& identity) {
  const EntryIdentity present = entryIdentity(values);
  return present.inode == identity.inode && present.birth == identity.birth &&
         present.kind == identity.kind;
}

}  // namespace

Deletion::Deletion(PrivateDirectory* taken, int folder, const ItemState& item)
    : _taken(taken), _folder(folder), _item(item) {}

int Deletion::run() {
  if (!S_ISDIR(_item.root.kind)) return deleteRootFile();
  int code = enterRoot();
  while (code == 0 && !_way.empty()) {
    auto& pending = _way.back().pending;
    if (pending.empty()) {
      code = leave();
    } else {
      const std::string name = std::move(pending.back());
      pending.pop_back();
      code = enter(name);
    }
  }
  if (code != 0) giveBackDirectories();
  return code;
}

int Deletion::deleteRootFile() {
  const int directory = directoryAbove(0);
  const std::string path =
      _taken != nullptr ? PrivateDirectory::inPlace(0, _item.name) : _item.name;
  ReadLease lease;
  if (S_ISREG(_item.root.kind)) {
    if (const int code = lease.open(directory, path.c_str()); code != 0) return code;
  }
  EntryValues values{};
  if (const int code = readEntryValues(directory, path.c_str(), values); code != 0) return code;
  if (entryIdentity(values) != _item.root) return ESTALE;
  return unlinkFile(directory, path, values, lease);
}

int Deletion::enterRoot() {
  return push({.name = _item.name, .identity = _item.root, .isTaken = _taken != nullptr},
              directoryAbove(0),
              _taken != nullptr ? PrivateDirectory::inPlace(0, _item.name) : _item.name);
}

int Deletion::enter(const std::string& name) {
  const int parent = _way.back().directory.get();
  EntryValues values{};
  const int code = readEntryValues(parent, name.c_str(), values);
  if (code == ENOENT) return 0;
  if (code != 0) return code;
  if (!isDirectory(values) || !isUnchanged(values)) return ESTALE;

  Level level{.name = name, .identity = entryIdentity(values)};
  const std::size_t number = _way.size();
  int taking = _taken != nullptr ? _taken->makePlace(number) : ENOSPC;
  if (taking == 0) {
    const std::string path = PrivateDirectory::inPlace(number, name);
    taking = renameWithoutReplacing(parent, name, _taken->descriptor(), path);
    if (taking == 0) {
      level.isTaken = true;
      return push(std::move(level), _taken->descriptor(), path);
    }
  }
  // A directory that may not be written can't be moved; an empty one goes all the same.
  if (unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0) return 0;
  return isLackOfSpace(taking) ? push(std::move(level), parent, name) : taking;
}

int Deletion::push(Level level, int parent, const std::string& path) {
  const EntryIdentity expected = level.identity;
  int code = openDirectory(parent, path.c_str(), level.directory);
  EntryValues values{};
  if (code == 0) code = readEntryValues(level.directory.get(), "", values);
  if (code == 0 && entryIdentity(values) != expected) code = ESTALE;
  _way.push_back(std::move(level));
  if (code != 0) return code;

  if (_way.size() > openLevels) {
    const std::size_t far = _way.size() - 1 - openLevels;
    // One that lies in the directory above it is reached by that alone.
    if (_way[far].isTaken && _way[far + 1].isTaken) _way[far].directory.close();
  }
  return emptyTop();
}

int Deletion::leave() {
  const std::size_t number = _way.size() - 1;
  _way.back().directory.close();
  if (unlinkat(directoryAbove(number), pathOf(number).c_str(), AT_REMOVEDIR) != 0) {
    // Something has come into it since it was emptied.
    return errno == ENOTEMPTY || errno == EEXIST ? ESTALE : errno;
  }
  _way.pop_back();
  return _way.empty() ? 0 : reopen(_way.size() - 1);
}

/// Reads until a whole pass meets nothing but directories, since a listing that shrinks while it is
/// read may leave entries out.
int Deletion::emptyTop() {
  bool hasDeleted = true;
  while (hasDeleted) {
    hasDeleted = false;
    if (const int code = deleteFilesOfTop(hasDeleted); code != 0) return code;
  }
  return 0;
}

int Deletion::deleteFilesOfTop(bool& hasDeleted) try {
  Level& level = _way.back();
  const int directory = level.directory.get();
  level.pending.clear();
  lseek(directory, 0, SEEK_SET);
  _reader.start(directory);
  while (const auto entry = _reader.next()) {
    if (entry->type == DT_DIR) {
      level.pending.emplace_back(entry->name);
      continue;
    }
    const int code = deleteFile(directory, entry->name, entry->type);
    if (code == EISDIR) {
      level.pending.emplace_back(entry->name);
    } else if (code == 0) {
      hasDeleted = true;
    } else if (code != ENOENT) {
      // An entry that is listed and isn't there must not have the pass repeated for ever.
      return code;
    }
  }
  return 0;
} catch (const std::system_error& error) {
  return error.code().value();
}

/// Answers ENOENT for one that is gone already, EISDIR for a directory.
int Deletion::deleteFile(int directory, const std::string& name, unsigned char type) {
  ReadLease lease;
  if (type == DT_REG || type == DT_UNKNOWN) {
    if (const int code = lease.open(directory, name.c_str()); code != 0) return code;
  }
  EntryValues values{};
  const int code = lease.descriptor() >= 0 ? readEntryValues(lease.descriptor(), "", values)
                                           : readEntryValues(directory, name.c_str(), values);
  if (code != 0) return code;
  if (isDirectory(values)) return type == DT_UNKNOWN ? EISDIR : ESTALE;
  if ((values.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) return EXDEV;
  if (!isUnchanged(values)) return ESTALE;

  const std::size_t number = _way.size();
  int taking = _taken != nullptr ? _taken->makePlace(number) : ENOSPC;
  if (taking == 0) {
    const std::string path = PrivateDirectory::inPlace(number, name);
    taking = renameWithoutReplacing(directory, name, _taken->descriptor(), path);
    if (taking == 0) {
      const int deleting = unlinkFile(_taken->descriptor(), path, values, lease);
      if (deleting != 0) returnTo(directory, path, name);
      return deleting;
    }
  }
  return isLackOfSpace(taking) ? unlinkFile(directory, name, values, lease) : taking;
}

/// Unlinks a file if it is the one that these values were read of, and nobody waits to write to it.
int Deletion::unlinkFile(int directory, const std::string& path, const EntryValues& values,
                         const ReadLease& lease) {
  EntryValues present{};
  if (const int code = readEntryValues(directory, path.c_str(), present); code != 0) return code;
  if (entryIdentity(present) != entryIdentity(values)) return ESTALE;

  const bool hasOtherLinks = present.stx_nlink > 1;
  FileDescriptor link;
  if (hasOtherLinks)
    link = FileDescriptor(openat(directory, path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (const int code = lease.check(); code != 0) return code;
  if (unlinkat(directory, path.c_str(), 0) != 0) return errno;
  if (hasOtherLinks && readEntryValues(link.get(), "", present) == 0)
    _ownChanges[present.stx_ino] = changeTime(present);
  return 0;
}

/// Opens the directory of this number again where it was closed.
int Deletion::reopen(std::size_t number) {
  Level& level = _way[number];
  if (level.directory) return 0;
  int code = openDirectory(directoryAbove(number), pathOf(number).c_str(), level.directory);
  EntryValues values{};
  if (code == 0) code = readEntryValues(level.directory.get(), "", values);
  if (code == 0 && !isSameDirectory(values, level.identity)) code = ESTALE;
  if (code != 0) level.directory.close();
  return code;
}

/// Lays an entry back into its directory. Whoever took it away meanwhile has it.
void Deletion::returnTo(int directory, const std::string& path, const std::string& name) {
  const int code = giveBack(_taken->descriptor(), path, directory, name);
  if (code != ENOENT) _returning = code;
}

/// Lays the taken directories back into those above them, the innermost first. Where one can't go
/// back, those above it keep their places too: by them the next start finds where it belongs.
void Deletion::giveBackDirectories() {
  for (; _returning == 0 && _way.size() > 1; _way.pop_back()) {
    const std::size_t number = _way.size() - 1;
    if (!_way.back().isTaken) continue;
    _returning = reopen(number - 1);
    if (_returning != 0) return;
    returnTo(_way[number - 1].directory.get(), pathOf(number), _way.back().name);
  }
}

bool Deletion::isUnchanged(const EntryValues& values) const {
  const Timestamp change = changeTime(values);
  if (change <= _item.tree.latestChange) return true;
  const auto own = _ownChanges.find(values.stx_ino);
  return own != _ownChanges.end() && own->second == change;
}

std::string Deletion::pathOf(std::size_t number) const {
  const Level& level = _way[number];
  return level.isTaken ? PrivateDirectory::inPlace(number, level.name) : level.name;
}

int Deletion::directoryAbove(std::size_t number) const {
  const bool isTaken = _way.empty() ? _taken != nullptr : _way[number].isTaken;
  if (isTaken) return _taken->descriptor();
  return number == 0 ? _folder : _way[number - 1].directory.get();
}

}  // namespace tidemar
