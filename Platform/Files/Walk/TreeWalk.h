#pragma once

#include <cstddef>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/DirectoryStack.h"
#include "Platform/Files/Walk/HiddenList.h"
#include "Platform/PlatformError.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// One entry met on a walk; lives for the call alone.
struct WalkedEntry {
  const char* name;
  std::size_t depth;  ///< 1 for what lies directly in the root.
  const EntryValues& values;
  bool isHidden;
  int descriptor;  ///< Of a directory that could be opened the open directory, else -1.
};

class WalkHandler {
 public:
  virtual ~WalkHandler() = default;
  virtual void entry(const WalkedEntry& entry) = 0;

  /// A part can't be read, or is another mount or subvolume; the walk goes on behind it.
  virtual void failed(const PlatformError& error) = 0;
};

/// Reads a whole tree: each entry once by one statx call, a directory's own values from its
/// descriptor, at a cost in descriptors and stack that doesn't grow with depth. A directory comes
/// before what lies in it, and all of that before anything else. Never follows a link, never enters
/// another mount or subvolume, and opens nothing but directories and their lists of hidden names.
class TreeWalk {
 public:
  TreeWalk(const FileURL& root, WalkHandler& handler) : _handler(handler), _stack(root) {}

  /// Walks what lies in the directory of this name in an open parent.
  void run(int parent, const char* name);

 private:
  void enter(OpenDirectory directory);
  void readTop();
  void visit(const DirectoryReader::Entry& entry, const HiddenList& hidden);
  void descend(const PendingDirectory& directory);
  void failed(const FileURL& url, int code);
  void refuseBoundary(const FileURL& url);

  WalkHandler& _handler;
  DirectoryReader _reader;
  DirectoryStack _stack;
};

}  // namespace tidemar
