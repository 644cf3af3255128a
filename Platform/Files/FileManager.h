#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/ResourceValues.h"
#include "Platform/PlatformError.h"
#include "TidemarCore/Date.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// One entry of a listing.
struct DirectoryEntry {
  FileURL url;
  ResourceValues values;
};

/// One entry met on a walk. The name lives for the call alone.
struct TreeElement {
  std::string_view name;  ///< Its last path component.
  std::size_t depth = 1;  ///< 1 for what lies directly in the directory that is walked.
  ResourceValues values;
};

/// Receives a walk. A directory comes before what lies in it, and all that lies in it follows it
/// before anything else does.
class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;
  virtual void visit(const TreeElement& element) = 0;

  /// A part of the tree could not be read, or is another mount or subvolume. The walk goes on
  /// behind it.
  virtual void failed(const PlatformError& error) = 0;
};

/// Where a bookmark leads now.
struct ResolvedBookmark {
  FileURL url;
  bool isStale = false;  ///< The bookmark wants to be made anew.

  /// The remembered directory wasn't found, and this is another one that lies at its old place.
  /// Such a bookmark is stale too.
  bool isReplacement = false;
};

/// The capacities of a volume in bytes, as far as it reports them.
struct VolumeCapacity {
  std::optional<std::int64_t> available;  ///< What an ordinary user may still write.
  std::optional<std::int64_t> total;
};

/// All access to the disk. Every operation is synchronous on the caller's thread, reentrant and
/// without shared state; none but those under "Identity" follows a link in the last component of a
/// URL, and none crosses into another mount or subvolume below it. Failures are thrown as
/// `PlatformError`, and a change that failed has left the item where it was unless its comment says
/// otherwise.
class FileManager {
 public:
  virtual ~FileManager() = default;

  // Reading.

  /// The entries of a directory, hidden ones included, "." and ".." not, in the order of the file
  /// system, each with its values. An entry that vanishes meanwhile isn't listed; any other entry
  /// whose values can't be read fails the listing.
  virtual std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& directory) const = 0;

  /// The values of one entry, as its directory's listing would give them.
  virtual ResourceValues resourceValues(const FileURL& url) const = 0;

  /// Walks all that lies in a directory, hidden entries and packages included. A directory that
  /// can't be opened, or is a mount or subvolume of its own, is one call of `failed` and nothing
  /// else.
  virtual void walkTree(const FileURL& directory, TreeVisitor& visitor) const = 0;

  /// Whether something lies at this place, a dangling link included. Throws where that can't be
  /// told.
  virtual bool fileExists(const FileURL& url) const = 0;

  // Identity.

  /// The absolute path without links. Throws for a path that leads nowhere or holds a NUL.
  virtual std::string canonicalPath(const FileURL& url) const = 0;

  /// The path without links as far as it can be followed; the path as it stands where it leads
  /// nowhere.
  virtual std::string resolvingSymlinksInPath(const FileURL& url) const = 0;

  /// Bytes by which a directory is found again after it was renamed or moved on its file system.
  virtual std::string bookmarkData(const FileURL& directory) const = 0;

  /// The directory of a bookmark. Throws where it is gone, lies in a Trash or its file system isn't
  /// there, and for bytes that are no bookmark.
  virtual ResolvedBookmark resolveBookmark(std::string_view bookmark) const = 0;

  // Tags: a list of byte strings kept with the file, shared with other programs.

  /// The tags exactly as they stand, blanks around them included; empty where there are none or the
  /// file system keeps none.
  virtual std::vector<std::string> tagNames(const FileURL& url) const = 0;

  /// Replaces the whole list; an empty one leaves the file without tags.
  virtual void setTagNames(const FileURL& url, std::span<const std::string> tags) const = 0;

  // Changing.

  /// Deletes an item with all that lies in it. An item that is or holds another mount or subvolume,
  /// a part that can be seen beforehand not to go, or the home folder or one of
  /// `systemDirectoryURLs`, is refused before anything in it is touched.
  /// A failure after that leaves what had not gone yet.
  virtual void removeItem(const FileURL& url) const = 0;

  /// Moves an item to the Bin of its own file system and answers where it lies there. Never copies
  /// and never deletes. Refuses an item that is or holds another mount or subvolume, the
  /// home folder or one of `systemDirectoryURLs`.
  virtual std::optional<FileURL> trashItem(const FileURL& url) const = 0;

  /// Moves an item to a place where nothing lies yet, and fails if something does. An item that
  /// leaves a Bin takes its Bin record with it.
  virtual void moveItem(const FileURL& from, const FileURL& to) const = 0;

  // Facts.

  virtual VolumeCapacity volumeCapacity(const FileURL& url) const = 0;

  /// The roots of the mounted volumes, those of the kernel's pseudo file systems left out.
  virtual std::vector<FileURL> mountedVolumeURLs() const = 0;

  virtual FileURL homeDirectoryForCurrentUser() const = 0;

  /// What this platform's system and user consider a fixed place beside the roots that every
  /// platform has: the top directories of the system, and the user's Desktop and Documents under
  /// their own names.
  virtual std::vector<FileURL> systemDirectoryURLs() const = 0;

  /// When the computer last started. A step of the clock doesn't make it later.
  virtual Date bootTime() const = 0;
};

}  // namespace tidemar
