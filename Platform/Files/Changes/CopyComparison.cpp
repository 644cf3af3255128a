#include "Platform/Files/Changes/CopyComparison.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/TreeWalk.h"

namespace tidemar {
namespace {

constexpr int differs = ESTALE;

/// What FAT rounds times to, the coarsest of all.
constexpr std::int64_t timeStep = 2;

struct Buffers {
  std::vector<char> original = std::vector<char>(256 * 1024);
  std::vector<char> copy = std::vector<char>(256 * 1024);
};

bool haveEqualValues(const EntryValues& a, const EntryValues& b) {
  const auto apart = modificationTime(a).seconds - modificationTime(b).seconds;
  return a.stx_mode == b.stx_mode && (isDirectory(a) || a.stx_size == b.stx_size) &&
         a.stx_rdev_major == b.stx_rdev_major && a.stx_rdev_minor == b.stx_rdev_minor &&
         std::abs(apart) < timeStep;
}

/// Where the next data begins, or the end of the file. File systems that don't know have no holes.
off_t nextData(int file, off_t offset, off_t size) {
  const off_t data = lseek(file, offset, SEEK_DATA);
  if (data >= 0) return data;
  return errno == ENXIO ? size : offset;
}

/// How much was read, less only at the end of the file; -1 on failure.
ssize_t readAt(int file, std::vector<char>& buffer, off_t offset) {
  std::size_t total = 0;
  while (total < buffer.size()) {
    const ssize_t size = pread(file, buffer.data() + total, buffer.size() - total,
                               offset + static_cast<off_t>(total));
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return -1;
    if (size == 0) break;
    total += static_cast<std::size_t>(size);
  }
  return static_cast<ssize_t>(total);
}

int compareContents(int original, int copy, off_t size, Buffers& buffers) {
  for (off_t offset = 0;;) {
    offset = std::min(nextData(original, offset, size), nextData(copy, offset, size));
    if (offset >= size) return 0;
    const ssize_t read = readAt(original, buffers.original, offset);
    const ssize_t readOfCopy = read < 0 ? -1 : readAt(copy, buffers.copy, offset);
    if (readOfCopy < 0) return errno;
    if (read == 0 || read != readOfCopy ||
        !std::equal(buffers.original.begin(), buffers.original.begin() + read,
                    buffers.copy.begin()))
      return differs;
    offset += read;
  }
}

int readLink(int directory, const char* path, std::string& target) {
  target.resize(PATH_MAX);
  const ssize_t size = readlinkat(directory, path, target.data(), target.size());
  if (size < 0) return errno;
  target.resize(static_cast<std::size_t>(size));
  return 0;
}

/// Compares a tree, entry by entry as a walk through it meets them.
class Comparison : private WalkHandler {
 public:
  int run(int directory, const std::string& path, int copyDirectory, const std::string& copyPath) {
    EntryValues values{};
    _code = readEntryValues(directory, path.c_str(), values);
    if (_code == 0) _code = compare(directory, path.c_str(), values, copyDirectory, copyPath);
    if (_code != 0 || !isDirectory(values)) return _code;

    FileDescriptor root;
    _code = openDirectory(directory, path.c_str(), root);
    if (_code == 0) _code = openDirectory(copyDirectory, copyPath.c_str(), _copy);
    if (_code == 0) TreeWalk(*this, HiddenNames::untold).run(std::move(root), identityOf(values));
    return _code;
  }

 private:
  void entry(const WalkedEntry& entry) override {
    if (_code != 0) return;
    _lengths.resize(entry.depth);
    _path.resize(_lengths.back());
    _path += entry.name;
    _code = compare(entry.parent, entry.name, entry.values, _copy.get(), _path);
    _lengths.push_back((_path += '/').size());
  }

  void failed(int code) override {
    if (_code == 0) _code = code;
  }

  int compare(int directory, const char* name, const EntryValues& values, int copyDirectory,
              const std::string& copyPath) {
    EntryValues copied{};
    const char* copy = copyPath.c_str();
    const int code = readEntryValues(copyDirectory, copy, copied);
    if (code != 0) return code == ENOENT ? differs : code;
    if (!haveEqualValues(values, copied)) return differs;
    if (S_ISLNK(values.stx_mode)) return compareLinks(directory, name, copyDirectory, copy);
    if (!S_ISREG(values.stx_mode) || values.stx_size == 0) return 0;
    return compareFiles(directory, name, copyDirectory, copy, static_cast<off_t>(values.stx_size));
  }

  int compareLinks(int directory, const char* name, int copyDirectory, const char* copyPath) {
    int code = readLink(directory, name, _target);
    if (code == 0) code = readLink(copyDirectory, copyPath, _targetOfCopy);
    if (code != 0) return code;
    return _target == _targetOfCopy ? 0 : differs;
  }

  int compareFiles(int directory, const char* name, int copyDirectory, const char* copyPath,
                   off_t size) {
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const FileDescriptor original(openat(directory, name, flags));
    if (!original) return errno;
    const FileDescriptor copy(openat(copyDirectory, copyPath, flags));
    if (!copy) return errno;
    // It has been written out, so that this makes the disk answer instead of the memory.
    posix_fadvise(copy.get(), 0, 0, POSIX_FADV_DONTNEED);
    return compareContents(original.get(), copy.get(), size, _buffers);
  }

  int _code = 0;
  FileDescriptor _copy;               ///< The directory that the copy is.
  std::string _path;                  ///< Of the present entry, from there.
  std::vector<std::size_t> _lengths;  ///< Of the paths of the directories above it.
  std::string _target;
  std::string _targetOfCopy;
  Buffers _buffers;
};

}  // namespace

int compareWithCopy(int directory, const std::string& path, int copyDirectory,
                    const std::string& copyPath) {
  return Comparison().run(directory, path, copyDirectory, copyPath);
}

}  // namespace tidemar
