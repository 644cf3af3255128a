#include "Platform/Files/Descriptors/ReadLease.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace tidemar {
namespace {

/// Servers give leases out as they like, and refuse them without any writer.
bool answersForServer(int file) noexcept {
  constexpr std::array<long, 6> types = {NFS_SUPER_MAGIC,  SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC,
                                         SMB2_SUPER_MAGIC, AFS_FS_MAGIC,    CEPH_SUPER_MAGIC};
  struct statfs fileSystem {};
  return fstatfs(file, &fileSystem) != 0 ||
         std::ranges::find(types, fileSystem.f_type) != types.end();
}

}  // namespace

int ReadLease::open(int directory, const char* name) noexcept {
  constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  _isHeld = false;
  _file = FileDescriptor(openat(directory, name, flags));
  if (!_file) return 0;
  // Who wants to write while a lease is held has the kernel send a signal, which by default ends
  // the process.
  [[maybe_unused]] static const auto before = std::signal(SIGIO, SIG_IGN);
  _isHeld = fcntl(_file.get(), F_SETLEASE, F_RDLCK) == 0;
  return !_isHeld && errno == EAGAIN && !answersForServer(_file.get()) ? ETXTBSY : 0;
}

int ReadLease::check() const noexcept {
  // For a lease that somebody waits for the kernel tells what it is to become, not what it is.
  return _isHeld && fcntl(_file.get(), F_GETLEASE) != F_RDLCK ? ETXTBSY : 0;
}

}  // namespace tidemar
