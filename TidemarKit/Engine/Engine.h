#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Files/FileManager.h"
#include "Platform/Logger.h"
#include "TidemarCore/Date.h"
#include "TidemarKit/Engine/Failure.h"
#include "TidemarKit/Engine/FolderStatus.h"
#include "TidemarKit/Engine/RunGate.h"
#include "TidemarKit/Engine/RunResult.h"
#include "TidemarKit/Store/Folder.h"
#include "TidemarKit/Store/JournalEntry.h"
#include "TidemarKit/Store/RemovalLedger.h"
#include "TidemarKit/Store/Store.h"

namespace tidemar {

/// A folder as it stands now, with the directory to which its bookmark leads, open.
struct ResolvedFolder {
  Folder folder;
  std::unique_ptr<OpenFolder> place;
};

/// Joins the planning to the real world: knows folders by their row, finds them by their bookmark,
/// clears them by their tag, and puts items back.
///
/// All operations are synchronous on the caller's thread. The engine has no clock, and no memory
/// but for the rows of removals that couldn't be written yet: all else it knows between two calls
/// lies in the store and on the disk, or is what the store still says. It does not keep two runs of
/// one folder apart; the second would book what is gone under its failures.
///
/// Besides `Failure`, operations throw what comes from below as it came: `PlatformError`,
/// `System::Failure` and `DatabaseError`. A change of the disk comes first and its record after it,
/// so that a record always tells of something that happened.
class Engine {
 public:
  using Failure = EngineFailure;

  /// The file manager must outlive the engine.
  Engine(std::unique_ptr<Store> store, const FileManager& fileManager);

  Store& store() const noexcept { return *_store; }

  // Folders.

  /// The path that the program knows a folder by: absolute and without links.
  std::string canonicalPath(const FileURL& url) const;

  /// Makes a folder known, with the rules of a new folder, or finds the row of the one that lives
  /// there, which another thread may be adding. Neither tags it nor minds whether it is a protected
  /// root.
  Folder addFolder(const FileURL& url, Date now);

  /// Puts the tag on the folder, which starts its restart rule anew, or takes the tag off. A
  /// failure of the tag's change leaves the row as it was.
  void setTemporary(const Folder& folder, bool isTemporary, Date now);

  /// Lays back what a killed run had taken and takes the tag off where the folder can be found, and
  /// drops the row with its journal. What lies in the folder and in the Bin stays there. Throws
  /// `MissingValue` for a folder without an id; a tag that can't be taken off is thrown and the row
  /// stays.
  void forget(const Folder& folder);

  /// Finds the folder. If it has moved, or its bookmark wants renewing, the row is updated. Throws
  /// where another known folder has taken the place of a lost one: each row has its own rules.
  ResolvedFolder resolve(const Folder& folder);

  /// Fetches and resolves. Throws `Failure::FolderNotFound`.
  ResolvedFolder resolvedFolder(std::int64_t id);

  // Clearing.

  /// Reads a folder and plans: what a run at `now` would do. Changes nothing on the disk, but for
  /// what a killed run had taken: that is laid back first.
  FolderStatus status(std::int64_t folderID, Date now);

  /// Clears what is due, oldest first, and sets the folder's `lastRunAt` to `now`, which is also
  /// the `performedAt` of every entry. Ends early when the tag is no longer there before an item,
  /// as a run does that has nothing left to do; and when `gate` was closed, for all folders or for
  /// this one, without `lastRunAt`, since the rest is still to be cleared. Never ends in the middle
  /// of an item. While it clears it holds a passage of the gate. An item that can't be removed, or
  /// for which there would be no entry, is reported and doesn't end the run. Throws only where the
  /// folder can't be read, before anything is touched, or where `lastRunAt` can't be written.
  RunResult run(std::int64_t folderID, Date now, RunGate& gate);

  /// Puts one item back from the Bin into its folder, wherever that lies now, under its own name.
  /// Never overwrites. After a failure the entry is unchanged and can be tried again.
  void undo(std::int64_t journalEntryID, Date now);

 private:
  struct Reading {
    Folder folder;
    std::unique_ptr<OpenFolder> place;
    FolderStatus status;
  };

  Reading read(std::int64_t folderID, Date now);
  JournalEntry remove(const Removal& removal, OpenFolder& place, const Folder& folder, Date now);
  void settleLedger();
  std::optional<Folder> folderLivingAt(const OpenFolder& place, const std::vector<Folder>& known);
  std::vector<Folder> otherFolders(const Folder& folder) const;
  std::shared_ptr<const KnownFolders> knownFolders();

  std::unique_ptr<Store> _store;
  RemovalLedger _ledger;
  const FileManager& _fileManager;
  Logger _logger;

  // Made again once a row has come, gone or moved: a cycle over many folders asks for it each time.
  std::mutex _knownMutex;
  Store::PlacesVersion _knownVersion;
  std::shared_ptr<const KnownFolders> _known;
};

}  // namespace tidemar
