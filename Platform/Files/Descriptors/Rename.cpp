#include "Platform/Files/Descriptors/Rename.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/EntryValues.h"

namespace tidemar {
namespace {

/// A second link claims the new name, or fails if it is taken; then the old one goes.
int moveByLink(int fromDirectory, const char* from, int toDirectory, const char* to) noexcept {
  if (linkat(fromDirectory, from, toDirectory, to, 0) != 0) return errno;

  EntryValues linked{};
  EntryValues left{};
  if (const int code = readEntryValues(toDirectory, to, linked); code != 0) return code;
  int code = readEntryValues(fromDirectory, from, left);
  // A program that saves by renaming may have put a new file at the old name meanwhile: that one
  // must not be unlinked.
  if (code == 0 && identityOf(linked) != identityOf(left)) code = ESTALE;
  if (code == 0 && unlinkat(fromDirectory, from, 0) != 0) code = errno;
  // Where someone else took the old name away, the new one may be the last.
  if (code == 0 || code == ENOENT) return 0;
  unlinkat(toDirectory, to, 0);
  return code;
}

/// An empty directory of our own claims the new name. A plain rename replaces only that: it fails
/// if anything has come into it.
int moveOntoReservedDirectory(int fromDirectory, const char* from, int toDirectory,
                              const char* to) noexcept {
  if (mkdirat(toDirectory, to, 0700) != 0) return errno;
  if (renameat(fromDirectory, from, toDirectory, to) == 0) return 0;
  const int code = errno;
  unlinkat(toDirectory, to, AT_REMOVEDIR);
  return code;
}

}  // namespace

int renameWithoutReplacing(int fromDirectory, const std::string& fromName, int toDirectory,
                           const std::string& toName) noexcept {
  const char* from = fromName.c_str();
  const char* to = toName.c_str();
  if (renameat2(fromDirectory, from, toDirectory, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;

  EntryValues values{};
  if (const int code = readEntryValues(fromDirectory, from, values); code != 0) return code;
  return isDirectory(values) ? moveOntoReservedDirectory(fromDirectory, from, toDirectory, to)
                             : moveByLink(fromDirectory, from, toDirectory, to);
}

}  // namespace tidemar
