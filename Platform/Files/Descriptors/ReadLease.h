#pragma once

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// A regular file that nobody writes to unnoticed: open under a read lease (fcntl(2), F_SETLEASE),
/// which the kernel refuses while anyone has the file open for writing or mapped writable, and for
/// which it lets a later writer wait until the lease ends with this object.
///
/// The first one has the whole process ignore SIGIO, by which the kernel tells of such a writer.
///
/// Where no lease can tell (a file that can't be read or is another user's, a file system that has
/// none or answers for its server) there is none: then the dates of the file have to do.
class ReadLease {
 public:
  /// Opens a file and takes the lease on it. Answers ETXTBSY where there is a writer; 0 otherwise,
  /// with or without a lease, and with or without a descriptor.
  int open(int directory, const char* name) noexcept;

  /// Answers ETXTBSY as soon as somebody waits to write, whose work would be lost with the file;
  /// else 0.
  int check() const noexcept;

  /// Of the open file, -1 if it couldn't be opened. Stays owned.
  int descriptor() const noexcept { return _file.get(); }

 private:
  FileDescriptor _file;
  bool _isHeld = false;
};

}  // namespace tidemar
