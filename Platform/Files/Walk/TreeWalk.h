#pragma once

#include <cstddef>

#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/DirectoryStack.h"
#include "Platform/Files/Walk/HiddenList.h"

namespace tidemar {

/// One entry met on a walk; lives for the call alone.
struct WalkedEntry {
  const char* name;
  std::size_t depth;  ///< 1 for what lies directly in the root.
  const EntryValues& values;
  bool isHidden;
  int parent;      ///< The open directory that it lies in.
  int descriptor;  ///< Of a directory that could be opened the open directory, else -1.
};

class WalkHandler {
 public:
  virtual ~WalkHandler() = default;
  virtual void entry(const WalkedEntry& entry) = 0;

  /// A part can't be read (an errno value), or is another mount or subvolume (EXDEV); the walk goes
  /// on behind it.
  virtual void failed(int code) = 0;
};

/// Whether a walk tells which entries are hidden, for which it reads each directory's list of
/// hidden names; else only the names that begin with "." are.
enum class HiddenNames { told, untold };

/// Reads whole trees, one after the other: each entry once by one statx call, a directory's own
/// values from its descriptor, at a cost in descriptors and stack that doesn't grow with depth. A
/// directory comes before what lies in it, and all of that before anything else. Never follows a
/// link, never enters another mount or subvolume, and opens nothing but directories and their lists
/// of hidden names.
class TreeWalk {
 public:
  TreeWalk(WalkHandler& handler, HiddenNames hiddenNames)
      : _handler(handler), _hiddenNames(hiddenNames) {}

  /// Walks what lies in an open directory.
  void run(FileDescriptor root, const DirectoryIdentity& identity);

 private:
  void enter(OpenDirectory directory);
  void readTop();
  void visit(const DirectoryReader::Entry& entry, const HiddenList& hidden);
  void descend(const PendingDirectory& directory);

  WalkHandler& _handler;
  HiddenNames _hiddenNames;
  DirectoryReader _reader;
  DirectoryStack _stack;
};

}  // namespace tidemar
