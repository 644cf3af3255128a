#pragma once

#include <map>
#include <string>
#include <vector>

#include "Platform/Files/Changes/PrivateDirectory.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/ReadLease.h"
#include "Platform/Files/ItemState.h"
#include "Platform/Files/Walk/DirectoryReader.h"

namespace tidemar {

/// Deletes one item that was found to be what was looked at, entry by entry, innermost first. Each
/// entry goes the way the item went: it is taken by a rename into a place of its own, compared, and
/// only then unlinked. A file that is open for writing, and anything that changed after the look,
/// ends the deletion. What someone drags out of the tree meanwhile is not followed.
///
/// Where there is no room for such places the entries are compared and deleted where they are.
class Deletion {
 public:
  /// The item lies in place 0 of `taken`, or without one in the open `folder`.
  Deletion(PrivateDirectory* taken, int folder, const ItemState& item);

  /// Answers 0, or an errno value: ESTALE where something had changed, ETXTBSY for a file that a
  /// program writes to. What is left of the item then lies where it lay, each in its directory.
  int run();

  /// Why that didn't come about: the errno value with which something couldn't be laid back into
  /// its directory, and the whole way to it lies in its places still. Else 0.
  int returning() const noexcept { return _returning; }

 private:
  /// A directory that is being emptied.
  struct Level {
    std::string name;
    EntryIdentity identity;
    FileDescriptor directory{};  ///< Closed far up the way.
    bool isTaken = false;  ///< It lies in the place of its number; else in the directory above.
    std::vector<std::string> pending{};  ///< The directories in it that are still to be entered.
  };

  int deleteRootFile();
  int enterRoot();
  int enter(const std::string& name);
  int push(Level level, int parent, const std::string& path);
  int leave();
  int emptyTop();
  int deleteFilesOfTop(bool& hasDeleted);
  int deleteFile(int directory, const std::string& name, unsigned char type);
  int unlinkFile(int directory, const std::string& path, const EntryValues& values,
                 const ReadLease& lease);
  int reopen(std::size_t number);
  void returnTo(int directory, const std::string& path, const std::string& name);
  void giveBackDirectories();

  bool isUnchanged(const EntryValues& values) const;
  std::string pathOf(std::size_t number) const;
  int directoryAbove(std::size_t number) const;

  PrivateDirectory* _taken;
  int _folder;
  const ItemState& _item;
  std::vector<Level> _way;  ///< The item first. The level of this index lies in this place.
  DirectoryReader _reader;
  int _returning = 0;

  /// The change times that taking one of its links away gave to a file with several.
  std::map<std::uint64_t, Timestamp> _ownChanges;
};

}  // namespace tidemar
