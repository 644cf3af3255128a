#pragma once

#include <functional>
#include <string>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/ItemState.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/KeptDirectories.h"
#include "Platform/Files/Walk/Obstacles.h"
#include "Platform/Files/Walk/TreeWalk.h"

namespace tidemar {

/// Reads top-level entries of an open directory, each with all that lies in it, in one pass. Who
/// needs only some of what a reading tells leaves out the visitor or the obstacles. For one thread.
class FolderReading : private WalkHandler {
 public:
  /// `directory` is open for reading and is borrowed, as `kept` is. `url` is for messages.
  /// Throws PlatformError where the directory's own values can't be read.
  FolderReading(int directory, const FileURL& url, const KeptDirectories& kept,
                HiddenNames hiddenNames);
  FolderReading(const FolderReading&) = delete;
  FolderReading& operator=(const FolderReading&) = delete;

  /// Tells the visitor of every entry; of its name too, before anything is read of it. Throws
  /// PlatformError as OpenFolder::read does.
  void readAll(TreeVisitor& visitor, const std::function<void(const char*)>& onName);

  /// Reads one entry by its path from the directory, known to be hidden or not. Answers no
  /// obstacle. Throws PlatformError, ENOENT where there is none.
  ItemState readOne(const std::string& name, bool isHidden, TreeVisitor* visitor,
                    Obstacles* obstacles);

  /// Whether the entry at this path is still what had been looked at, down to the last entry in it;
  /// its own change time, which a rename moves, is left out. What can't be read can't be told to be
  /// the same.
  bool isUnchanged(const std::string& path, const ItemState& item);

 private:
  void entry(const WalkedEntry& entry) override;
  void failed(int code) override;

  ItemState readOne(const std::string& name, bool isDirectory, bool isHidden);

  /// Answers false for one that has vanished.
  bool readEntry(const char* name, bool isDirectory, bool isHidden);
  bool readDirectory(const char* name, bool isHidden);
  void tell(const WalkedEntry& entry);
  void tellTags(int directory);

  int _directory;
  FileURL _url;
  const KeptDirectories& _kept;
  DirectoryIdentity _identity;
  TreeWalk _walk;
  TreeVisitor* _visitor = nullptr;
  Obstacles* _obstacles = nullptr;
  EntryIdentity _root;
  Timestamp _rootChange;
  TreeState _tree;
};

}  // namespace tidemar
