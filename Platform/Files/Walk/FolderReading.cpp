#include "Platform/Files/Walk/FolderReading.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <dirent.h>

#include "Platform/Files/Tags.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* operation = "read";

/// Spreads the bits of a number over all bits, so that sums of such numbers differ where any of
/// their parts do.
std::uint64_t spread(std::uint64_t value) noexcept {
  value ^= value >> 32U;
  value *= 0xd6e8feb86659fd93U;
  value ^= value >> 32U;
  value *= 0xd6e8feb86659fd93U;
  return value ^ (value >> 32U);
}

std::uint64_t spread(std::uint64_t seed, Timestamp time) noexcept {
  return spread(spread(seed ^ static_cast<std::uint64_t>(time.seconds)) ^ time.nanoseconds);
}

void add(TreeState& tree, const EntryValues& values) noexcept {
  const Timestamp change = changeTime(values);
  std::uint64_t print = spread(values.stx_ino ^ (std::uint64_t{values.stx_mode} << 48U));
  print = spread(print ^ values.stx_size);
  print = spread(spread(print, modificationTime(values)), change);
  ++tree.entries;
  tree.fingerprint += print;
  tree.latestChange = std::max(tree.latestChange, change);
}

}  // namespace

FolderReading::FolderReading(int directory, const FileURL& url, const KeptDirectories& kept,
                             HiddenNames hiddenNames)
    : _directory(directory), _url(url), _kept(kept), _walk(*this, hiddenNames) {
  EntryValues values{};
  if (const int code = readEntryValues(directory, "", values); code != 0)
    throw PlatformError(operation, url, code);
  _identity = identityOf(values);
}

void FolderReading::readAll(TreeVisitor& visitor, const std::function<void(const char*)>& onName) {
  _visitor = &visitor;
  try {
    DirectoryReader reader;
    lseek(_directory, 0, SEEK_SET);
    reader.start(_directory);
    const HiddenList hidden =
        reader.lists(".hidden").value_or(true) ? HiddenList::ofDirectory(_directory) : HiddenList();
    while (const auto entry = reader.next()) {
      onName(entry->name);
      readEntry(entry->name, entry->type == DT_DIR, hidden.hides(entry->name));
    }
  } catch (const std::system_error& error) {
    throw PlatformError(operation, _url, error.code().value());
  }
}

ItemState FolderReading::readOne(const std::string& name, bool isHidden, TreeVisitor* visitor,
                                 Obstacles* obstacles) {
  _visitor = visitor;
  _obstacles = obstacles;
  return readOne(name, false, isHidden);
}

bool FolderReading::isUnchanged(const std::string& path, const ItemState& item) try {
  _visitor = nullptr;
  _obstacles = nullptr;
  const ItemState present = readOne(path, S_ISDIR(item.root.kind), false);
  return present.root == item.root && present.tree == item.tree;
} catch (const PlatformError&) {
  return false;
}

/// With those who are told set. One that is known to be a directory is opened at once.
ItemState FolderReading::readOne(const std::string& name, bool isDirectory, bool isHidden) {
  _root = {};
  _tree = {};
  if (!readEntry(name.c_str(), isDirectory, isHidden))
    throw PlatformError(operation, _url.appendingPathComponent(name), ENOENT);
  return {.name = name,
          .root = _root,
          .tree = _tree,
          .latestChange = std::max(_rootChange, _tree.latestChange),
          .obstacle = std::nullopt};
}

bool FolderReading::readEntry(const char* name, bool isDirectoryByListing, bool isHidden) {
  if (isDirectoryByListing) return readDirectory(name, isHidden);
  EntryValues values{};
  const int code = readEntryValues(_directory, name, values);
  if (code == ENOENT) return false;
  if (code != 0) throw PlatformError(operation, _url.appendingPathComponent(name), code);
  if (isDirectory(values)) return readDirectory(name, isHidden);

  _root = entryIdentity(values);
  _rootChange = changeTime(values);
  const bool isOther = isBoundary(values, _identity);
  tell({name, 0, values, isHidden, _directory, -1});
  if (isOther) failed(EXDEV);
  return true;
}

bool FolderReading::readDirectory(const char* name, bool isHidden) {
  FileDescriptor directory;
  EntryValues values{};
  const auto [hasValues, code] =
      openDirectoryWithValues(_directory, name, _identity, directory, values);
  if (code == ENOENT) return false;
  if (!hasValues && code != EXDEV)
    throw PlatformError(operation, _url.appendingPathComponent(name), code);
  if (!hasValues) {
    // What is mounted there isn't asked for anything.
    values.stx_mode = S_IFDIR;
    values.stx_attributes = STATX_ATTR_MOUNT_ROOT;
  }
  _root = entryIdentity(values);
  _rootChange = changeTime(values);
  tell({name, 0, values, isHidden, _directory, directory.get()});
  if (code != 0) {
    failed(code);
  } else {
    _walk.run(std::move(directory), identityOf(values));
  }
  return true;
}

void FolderReading::entry(const WalkedEntry& entry) {
  add(_tree, entry.values);
  tell(entry);
}

void FolderReading::tell(const WalkedEntry& entry) {
  const bool isOpenDirectory = entry.descriptor >= 0;
  if (_visitor != nullptr) {
    // Deeper down a boundary isn't told of at all.
    const bool isOther = entry.depth == 0 && isBoundary(entry.values, _identity);
    _visitor->visit({entry.name, entry.depth,
                     resourceValues(entry.values, entry.name, entry.isHidden, isOther)});
    if (isOpenDirectory && _kept.mayBeKnown(entry.values)) tellTags(entry.descriptor);
  }
  if (_obstacles != nullptr) _obstacles->look(entry);
  if (isOpenDirectory && _kept.isFixed(entry.values, entry.name)) failed(EBUSY);
}

void FolderReading::tellTags(int directory) {
  try {
    _visitor->knownFolder(readTagNames(directory, _url));
  } catch (const PlatformError& error) {
    failed(error.code());
  }
}

void FolderReading::failed(int code) {
  _tree.isComplete = false;
  if (_visitor != nullptr) _visitor->failed(code);
  if (_obstacles != nullptr) _obstacles->failed(code);
}

}  // namespace tidemar
