#include "Platform/Files/Walk/Obstacles.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/ReadLease.h"

namespace tidemar {
namespace {

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

}  // namespace

Holder holderOf(int directory, const EntryValues& values) {
  return holderOf(directory, "", values);
}

void Obstacles::look(const WalkedEntry& entry) {
  const bool isItem = entry.depth == 0;
  if (_code != 0 || (!isItem && _disposal == Disposal::bin)) return;

  // What lies in a directory follows it directly, so the way down ends in the entry's own.
  _holders.resize(entry.depth + 1);
  note(whatKeeps(entry.values, _holders.back()));
  if (S_ISREG(entry.values.stx_mode) && _disposal == Disposal::delete_) {
    ReadLease lease;
    note(lease.open(entry.parent, entry.name));
  }
  if (!isDirectory(entry.values)) return;
  const Holder holder = entry.descriptor >= 0 ? holderOf(entry.descriptor, "", entry.values)
                                              : holderOf(entry.parent, entry.name, entry.values);
  // A directory that moves is written, since it holds the way to the one above it.
  if (isItem) note(holder.refusal);
  _holders.push_back(holder);
}

void Obstacles::failed(int code) {
  if (code == EXDEV || code == EBUSY || _disposal == Disposal::delete_) note(code);
}

PlatformError obstacleError(const std::string& operation, const FileURL& url, int code) {
  switch (code) {
    case EXDEV:
      return {operation, url, code, "it holds another volume"};
    case EBUSY:
      return {operation, url, code, "a folder that is never cleared lies in it"};
    case ETXTBSY:
      return {operation, url, code, "a program is writing to it"};
    default:
      return {operation, url, code};
  }
}

std::string operationOf(Disposal disposal) {
  return disposal == Disposal::bin ? "move to the Bin" : "delete";
}

}  // namespace tidemar
