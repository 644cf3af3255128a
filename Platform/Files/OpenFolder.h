#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/ItemState.h"
#include "Platform/Files/KnownFolders.h"
#include "Platform/Files/ResourceValues.h"
#include "Platform/PlatformError.h"
#include "TidemarCore/Disposal.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// One entry met on a reading. The name lives for the call alone.
struct TreeElement {
  std::string_view name;  ///< Its last path component.
  std::size_t depth = 0;  ///< 0 for what lies directly in the folder.
  ResourceValues values;
};

/// Receives a reading. A directory comes before what lies in it, and all that lies in it follows it
/// before anything else does.
class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;
  virtual void visit(const TreeElement& element) = 0;

  /// A part of the tree of the last element of depth 0 could not be read, is another mount or
  /// subvolume, or is a place that never goes. The reading goes on behind it.
  virtual void failed(int code) = 0;

  /// What came so far doesn't count: the reading begins anew.
  virtual void restart() = 0;

  /// The directory that was visited last is another folder that the program knows, with its tags.
  virtual void knownFolder(std::span<const std::string> tags) = 0;
};

/// The capacities of a volume in bytes, as far as it reports them.
struct VolumeCapacity {
  std::optional<std::int64_t> available;  ///< What an ordinary user may still write.
  std::optional<std::int64_t> total;
};

/// The item was no longer what had been looked at, and is left alone.
class ItemChanged : public PlatformError {
 public:
  using PlatformError::PlatformError;
};

/// An item in the Bin that may go back into the folder that was asked for it.
class BinnedItem {
 public:
  virtual ~BinnedItem() = default;

  /// Moves the item to its name in the folder, where nothing may lie yet (else EEXIST), and takes
  /// its record out of the Bin. To another file system it is copied with all its metadata, compared
  /// with the copy, and only then taken out of the Bin. Throws PlatformError, ItemChanged where
  /// something else lies in its place by now; the item then lies in the Bin, and only if it was
  /// copied and can't be taken out of the Bin in both places.
  virtual void putBack() = 0;
};

/// A folder that stays the one that was opened, whatever becomes of its path: everything here is
/// relative to its open directory. Used by one thread at a time; not to be kept longer than one
/// status, run or put-back, since it keeps its drive busy. Failures are thrown as `PlatformError`.
/// No operation follows a link that lies in the folder, and none crosses into another mount or
/// subvolume below it.
class OpenFolder {
 public:
  virtual ~OpenFolder() = default;

  /// Where it lay when it was opened: absolute and without links.
  virtual const FileURL& url() const = 0;

  /// Bytes by which it is found again after it was renamed or moved on its file system.
  virtual std::string bookmarkData() const = 0;

  /// Whether these bytes remember exactly this directory.
  virtual bool isRememberedBy(std::string_view bookmark) const = 0;

  /// Whether this is the directory at one of these places, links followed. A place that is a mount
  /// point is told by the table of mounts, and none is asked that could only be reached through
  /// another mount that may never answer, as that of a server that is gone.
  virtual bool isOneOf(std::span<const FileURL> places) const = 0;

  virtual VolumeCapacity volumeCapacity() const = 0;

  // Tags: a list of byte strings kept with the folder, shared with other programs.

  /// The tags exactly as they stand, blanks around them included; empty where there are none or the
  /// file system keeps none.
  virtual std::vector<std::string> tagNames() const = 0;

  /// Replaces the whole list; an empty one leaves the folder without tags.
  virtual void setTagNames(std::span<const std::string> tags) = 0;

  // Reading.

  /// Which folders `knownFolder` is to be called for; this one may be among them. A folder that
  /// lies in this one need not be found by its bookmark.
  virtual void setKnownFolders(std::shared_ptr<const KnownFolders> known) = 0;

  /// Lays back what runs that were killed had taken, each item under its name, or beside it where
  /// that is taken.
  virtual void giveBackTaken() = 0;

  /// Reads all that lies in the folder, hidden entries and packages included, after
  /// `giveBackTaken`. Top-level entries come in the order of the file system; one that vanishes
  /// meanwhile isn't told of, any other whose values can't be read fails the reading.
  virtual void read(TreeVisitor& visitor) = 0;

  /// Reads one top-level entry with all that lies in it, as `read` does, and what speaks against
  /// its going in this way. Throws ENOENT where nothing of this name lies in the folder.
  virtual ItemState look(std::string_view name, Disposal disposal, TreeVisitor& visitor) = 0;

  /// Whether something lies under this name, a dangling link included.
  virtual bool hasEntry(std::string_view name) const = 0;

  // Removing: the item is taken out of its place, compared with what was looked at, and only then
  // let go. One that has changed is given back, beside its name as "name (2)" if that is taken, and
  // `ItemChanged` is thrown. After any other failure too it lies in the folder.

  /// Moves an item to the Bin of its own file system and answers where it lies there. Never copies,
  /// never deletes.
  virtual std::optional<FileURL> trashItem(const ItemState& item) = 0;

  /// Deletes an item with all that lies in it. What can't be deleted, is open for writing or has
  /// changed by then is given back.
  virtual void removeItem(const ItemState& item) = 0;

  // Putting back.

  /// The item at this place in a Bin of this user, if its record says that it is what went from
  /// this folder under this name; none otherwise.
  virtual std::unique_ptr<BinnedItem> binnedItem(const FileURL& place, std::string_view name) = 0;
};

}  // namespace tidemar
