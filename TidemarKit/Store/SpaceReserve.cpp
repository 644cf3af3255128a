#include "TidemarKit/Store/SpaceReserve.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <random>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/ReadWrite.h"

namespace tidemar {
namespace {

constexpr std::size_t blockSize = std::size_t{64} << 10U;

/// What SQLite writes beside the database for a row, with something to spare.
constexpr std::size_t probeSize = blockSize;

/// A program's own file, to which no other name leads.
bool isOurs(const struct stat& status) noexcept {
  return S_ISREG(status.st_mode) && status.st_uid == geteuid() && status.st_nlink == 1;
}

/// Makes a file and has the disk take it. Answers 0 or an errno value; the file may be there
/// either way. The bytes are such as nothing can compress or share.
int makeFile(const std::string& path, std::size_t size) noexcept {
  unlink(path.c_str());
  const FileDescriptor file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) return errno;
  std::mt19937_64 generator(static_cast<std::uint64_t>(getpid()));
  std::array<std::uint64_t, blockSize / sizeof(std::uint64_t)> block{};
  const std::string_view bytes(reinterpret_cast<const char*>(block.data()), blockSize);
  for (std::size_t written = 0; written < size; written += blockSize) {
    std::ranges::generate(block, std::ref(generator));
    if (const int code = writeAll(file.get(), bytes); code != 0) return code;
  }
  return fsync(file.get()) == 0 ? 0 : errno;
}

}  // namespace

SpaceReserve::SpaceReserve(const std::optional<FileURL>& directory) {
  if (!directory) return;
  _directory = directory->path();
  _file = _directory + "/tidemar.reserve";
  _unfinished = _file + ".new";
  _probe = _file + ".probe";
}

void SpaceReserve::keep() noexcept {
  if (!isNeeded() || !hasPlentyOfRoom()) return;
  _wasGivenUp = false;
  // Under another name until it is whole: a part of it would pass for a reserve.
  const bool isMade =
      makeFile(_unfinished, size) == 0 && rename(_unfinished.c_str(), _file.c_str()) == 0;
  if (!isMade) unlink(_unfinished.c_str());
}

void SpaceReserve::keepAgain() noexcept {
  if (_wasGivenUp) keep();
}

bool SpaceReserve::isDiskFull() const noexcept {
  if (_directory.empty()) return false;
  const int code = makeFile(_probe, probeSize);
  unlink(_probe.c_str());
  return code == ENOSPC || code == EDQUOT;
}

bool SpaceReserve::giveUp() noexcept {
  if (_directory.empty()) return false;
  const FileDescriptor file(open(_file.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  const bool isThere =
      file && fstat(file.get(), &status) == 0 && isOurs(status) && status.st_size > 0;
  if (!isThere) return false;
  _wasGivenUp = true;
  // Both: a full file system may refuse either, and some free at once by the second alone.
  const bool isUnlinked = unlink(_file.c_str()) == 0;
  const bool isCut = ftruncate(file.get(), 0) == 0;
  return isUnlinked || isCut;
}

/// Whether there is none, or an empty one that couldn't be unlinked.
bool SpaceReserve::isNeeded() const noexcept {
  if (_directory.empty()) return false;
  struct stat status {};
  if (lstat(_file.c_str(), &status) != 0) return errno == ENOENT;
  return isOurs(status) && std::cmp_less(status.st_size, size);
}

bool SpaceReserve::hasPlentyOfRoom() const noexcept {
  constexpr unsigned timesItself = 8;
  struct statvfs room {};
  if (statvfs(_directory.c_str(), &room) != 0) return false;
  return room.f_bavail >= timesItself * size / room.f_frsize;
}

}  // namespace tidemar
