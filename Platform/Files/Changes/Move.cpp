#include "Platform/Files/Changes/Move.h"

#include <cerrno>
#include <cstdint>
#include <exception>
#include <random>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Changes/CopyItem.h"
#include "Platform/Files/Changes/Removal.h"
#include "Platform/Files/Changes/TreeBoundaries.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/Files/Walk/DirectoryStack.h"
#include "Platform/PlatformError.h"
#include "Platform/Text.h"

namespace tidemar {
namespace {

constexpr const char* operation = "move";

/// One end of a move: the open directory and the name in it.
struct Place {
  explicit Place(const FileURL& place)
      : url(place), directory(openParent(place, operation)), name(place.lastPathComponent()) {}

  FileURL url;
  FileDescriptor directory;
  std::string name;
};

EntryValues valuesAt(const Place& place) {
  EntryValues values{};
  const int code = readEntryValues(place.directory.get(), place.name.c_str(), values);
  if (code != 0) throw PlatformError(operation, place.url, code);
  return values;
}

[[noreturn]] void fail(const Place& from, const Place& to, int code) {
  if (code == EEXIST) {
    throw PlatformError(operation, from.url, code,
                        "something else lies at “" + displayText(to.url.path()) + "” by now");
  }
  throw PlatformError(operation, from.url, code);
}

/// Has the kernel write what it holds back: with syncfs of the whole file system, with fsync of the
/// directory.
void writeOut(const Place& place, int (*flush)(int)) {
  const FileDescriptor directory(
      openat(place.directory.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory || flush(directory.get()) != 0) throw PlatformError(operation, place.url, errno);
}

/// The complete item under a hidden name beside its new place; deleted unless it has been put
/// there.
class TemporaryCopy {
 public:
  explicit TemporaryCopy(const Place& to) : _to(to), _name(freeName(to)) {}
  TemporaryCopy(const TemporaryCopy&) = delete;
  TemporaryCopy& operator=(const TemporaryCopy&) = delete;
  ~TemporaryCopy() {
    if (!_isPending) return;
    try {
      removeItem(_to.url.deletingLastPathComponent().appendingPathComponent(_name));
    } catch (const std::exception&) {
      // What made the copy fail is what the caller is told; the remains are hidden.
    }
  }

  void make(const Place& from) {
    const EntryValues before = valuesAt(from);
    copyItem(from.directory.get(), from.name, _to.directory.get(), _name, from.url, operation);
    const EntryValues after = valuesAt(from);
    if (identityOf(before) != identityOf(after) ||
        modificationDate(before) != modificationDate(after) ||
        addedDate(before) != addedDate(after)) {
      throw PlatformError(operation, from.url, EBUSY, "it changed while it was copied");
    }
    writeOut(_to, syncfs);
  }

  int putInPlace() {
    const int code =
        renameWithoutReplacing(_to.directory.get(), _name, _to.directory.get(), _to.name);
    if (code == 0) _isPending = false;
    return code;
  }

 private:
  static std::string freeName(const Place& to) {
    std::random_device random;
    const std::uint64_t high = random();
    std::string name = ".tidemar-" + std::to_string(high << 32U | random());
    EntryValues values{};
    const int code = readEntryValues(to.directory.get(), name.c_str(), values);
    if (code != ENOENT) throw PlatformError(operation, to.url, code == 0 ? EEXIST : code);
    return name;
  }

  const Place& _to;
  std::string _name;
  bool _isPending = true;
};

void moveByCopy(const Place& from, const Place& to) {
  refuseMountsAndSubvolumes(from.directory.get(), from.name, from.url, operation);
  EntryValues values{};
  const int code = readEntryValues(to.directory.get(), to.name.c_str(), values);
  if (code != ENOENT) fail(from, to, code == 0 ? EEXIST : code);

  TemporaryCopy copy(to);
  copy.make(from);
  if (const int placing = copy.putInPlace(); placing != 0) fail(from, to, placing);
  // The original may go only when a loss of power can take neither the copy nor its name.
  writeOut(to, fsync);
  removeItem(from.url);
}

}  // namespace

void moveItem(const FileURL& from, const FileURL& to) {
  const Place source(from);
  const Place target(to);
  const int code = renameWithoutReplacing(source.directory.get(), source.name,
                                          target.directory.get(), target.name);
  if (code == EXDEV) {
    moveByCopy(source, target);
  } else if (code != 0) {
    fail(source, target, code);
  }
  if (isTrashFilesDirectory(from.deletingLastPathComponent())) {
    forgetTrashedItem(source.directory.get(), source.name);
  }
}

}  // namespace tidemar
