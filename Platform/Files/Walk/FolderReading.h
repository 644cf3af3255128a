#pragma once

#include <functional>
#include <string>

#include "Platform/Files/Changes/Obstacles.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/ItemState.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/KeptDirectories.h"
#include "Platform/Files/Walk/TreeWalk.h"

namespace tidemar {

/// Reads top-level entries of an open directory, each with all that lies in it, in one pass. Who
/// needs only some of what a reading tells leaves out the visitor or the obstacles.
class FolderReading : private WalkHandler {
 public:
  /// `directory` is open for reading and is borrowed, as `kept` is. `url` is for messages.
  FolderReading(int directory, const FileURL& url, const KeptDirectories& kept,
                HiddenNames hiddenNames);

  /// Tells the visitor of every entry; of its name too, before anything is read of it. Throws
  /// PlatformError as OpenFolder::read does.
  void readAll(TreeVisitor& visitor, const std::function<void(const char*)>& onName);

  /// Reads one entry, with its values already known to be hidden or not. Throws PlatformError,
  /// ENOENT where there is none. The identity and the state of its tree are answered without
  /// obstacle.
  ItemState readOne(const std::string& name, bool isHidden, TreeVisitor* visitor,
                    Obstacles* obstacles);

 private:
  void entry(const WalkedEntry& entry) override;
  void failed(int code) override;

  /// Answers false for one that has vanished.
  bool readEntry(const char* name, bool isDirectory, bool isHidden);
  bool readDirectory(const char* name, bool isHidden);
  void tell(const WalkedEntry& entry);
  void tellTags(int directory);

  int _directory;
  const FileURL& _url;
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
