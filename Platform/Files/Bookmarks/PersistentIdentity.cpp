#include "Platform/Files/Bookmarks/PersistentIdentity.h"

#include <array>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

static_assert(longestFileHandle == MAX_HANDLE_SZ);

/// FUSE makes its handles of numbers that it gives out in the order of first use: after the next
/// mount one of them may be another directory's.
bool keepsHandles(int directory) {
  struct statfs fileSystem {};
  return fstatfs(directory, &fileSystem) == 0 && fileSystem.f_type != FUSE_SUPER_MAGIC;
}

std::optional<FileHandle> fileHandle(int directory) {
  if (!keepsHandles(directory)) return std::nullopt;
  constexpr std::size_t headerSize = offsetof(file_handle, f_handle);
  alignas(file_handle) std::array<char, headerSize + longestFileHandle> storage{};
  auto* handle = reinterpret_cast<file_handle*>(storage.data());
  handle->handle_bytes = longestFileHandle;
  int mount = 0;
  // Without it the birth time has to do.
  if (name_to_handle_at(directory, "", handle, &mount, AT_EMPTY_PATH) != 0) return std::nullopt;
  FileHandle result{handle->handle_type, std::string(handle->handle_bytes, '\0')};
  std::memcpy(result.bytes.data(), storage.data() + headerSize, result.bytes.size());
  return result;
}

}  // namespace

PersistentIdentity persistentIdentity(int directory, const FileURL& url,
                                      const std::string& operation) {
  EntryValues values{};
  if (const int code = readEntryValues(directory, "", values); code != 0) {
    throw PlatformError(operation, url, code);
  }
  PersistentIdentity identity;
  identity.inode = values.stx_ino;
  if ((values.stx_mask & STATX_BTIME) != 0) {
    identity.birthTime = BirthTime{values.stx_btime.tv_sec, values.stx_btime.tv_nsec};
  }
  identity.handle = fileHandle(directory);
  return identity;
}

bool isSameDirectory(const PersistentIdentity& a, const PersistentIdentity& b) noexcept {
  if (a.inode != b.inode) return false;
  // Handles of two types can't be compared: XFS chooses the type by an option of the mount.
  if (a.handle && b.handle && a.handle->type == b.handle->type) return a.handle == b.handle;
  return a.birthTime && a.birthTime == b.birthTime;
}

}  // namespace tidemar
