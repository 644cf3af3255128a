#include "Platform/Files/Descriptors/EntryValues.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>

#include <sys/sysmacros.h>

namespace tidemar {
namespace {

constexpr unsigned wantedValues = STATX_TYPE | STATX_MODE | STATX_UID | STATX_NLINK | STATX_INO |
                                  STATX_SIZE | STATX_BLOCKS | STATX_MTIME | STATX_CTIME |
                                  STATX_BTIME | STATX_MNT_ID;

Date dateOf(const statx_timestamp& time) noexcept {
  return {static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9};
}

Timestamp timestamp(const statx_timestamp& time) noexcept {
  return {time.tv_sec, time.tv_nsec};
}

char lowerASCII(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

int readEntryValues(int directory, const char* name, EntryValues& values) noexcept {
  const int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | (name[0] == '\0' ? AT_EMPTY_PATH : 0);
  return statx(directory, name, flags, wantedValues, &values) == 0 ? 0 : errno;
}

int readValuesAt(const char* path, EntryValues& values) noexcept {
  return statx(AT_FDCWD, path, AT_NO_AUTOMOUNT, wantedValues, &values) == 0 ? 0 : errno;
}

bool isDirectory(const EntryValues& values) noexcept {
  return S_ISDIR(values.stx_mode);
}

DirectoryIdentity identityOf(const EntryValues& values) noexcept {
  return {makedev(values.stx_dev_major, values.stx_dev_minor), values.stx_ino, values.stx_mnt_id};
}

bool isSameDirectory(const EntryValues& a, const EntryValues& b) noexcept {
  const DirectoryIdentity first = identityOf(a);
  const DirectoryIdentity second = identityOf(b);
  return isDirectory(a) && isDirectory(b) && first.device == second.device &&
         first.inode == second.inode;
}

bool isBoundary(const EntryValues& entry, const DirectoryIdentity& directory) noexcept {
  if ((entry.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) return true;
  const DirectoryIdentity identity = identityOf(entry);
  if (identity.mount != directory.mount) return true;
  // Only a directory can be a subvolume; on an overlay a file may show the device of its layer.
  return isDirectory(entry) && identity.device != directory.device;
}

Timestamp modificationTime(const EntryValues& values) noexcept {
  return timestamp(values.stx_mtime);
}

Timestamp changeTime(const EntryValues& values) noexcept {
  return timestamp(values.stx_ctime);
}

Timestamp clockOfFiles() noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  return {now.tv_sec, static_cast<std::uint32_t>(now.tv_nsec)};
}

EntryIdentity entryIdentity(const EntryValues& values) noexcept {
  const bool hasBirth = (values.stx_mask & STATX_BTIME) != 0;
  return {.inode = values.stx_ino,
          .kind = values.stx_mode & static_cast<std::uint32_t>(S_IFMT),
          .birth = hasBirth ? timestamp(values.stx_btime) : Timestamp{},
          .modification = timestamp(values.stx_mtime),
          .size = values.stx_size};
}

Date modificationDate(const EntryValues& values) noexcept {
  return dateOf(values.stx_mtime);
}

Date addedDate(const EntryValues& values) noexcept {
  const Date changed = dateOf(values.stx_ctime);
  if ((values.stx_mask & STATX_BTIME) == 0) return changed;
  return std::max(changed, dateOf(values.stx_btime));
}

bool isPackageName(std::string_view name) noexcept {
  // Few on purpose: a package's age doesn't count what lies in it, so nothing is one that people
  // edit inside, as they do in a project called "site.app".
  constexpr std::array<std::string_view, 3> endings = {".appdir", ".photoslibrary", ".rtfd"};
  return std::ranges::any_of(endings, [name](std::string_view ending) {
    return name.size() > ending.size() &&
           std::ranges::equal(name.substr(name.size() - ending.size()), ending, {}, lowerASCII);
  });
}

ResourceValues resourceValues(const EntryValues& entry, std::string_view name, bool isHidden,
                              bool isBoundary) {
  ResourceValues values;
  values.isDirectory = isDirectory(entry);
  values.isPackage = isDirectory(entry) && isPackageName(name);
  values.isHidden = isHidden;
  if (!isBoundary) {
    values.addedToDirectoryDate = addedDate(entry);
    values.contentModificationDate = modificationDate(entry);
  }
  values.totalFileAllocatedSize = static_cast<std::int64_t>(entry.stx_blocks) * 512;
  return values;
}

}  // namespace tidemar
