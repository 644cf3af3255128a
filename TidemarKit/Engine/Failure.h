#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <variant>

namespace tidemar {

/// A value that must exist isn't there.
struct MissingValue : std::exception {
  const char* what() const noexcept override { return "A value that must exist is missing."; }
};

/// What can go wrong with a folder or a journal entry that the user can be told about. The cases
/// are the types nested here; paths are bytes of the file system.
struct EngineFailure : std::exception {
  /// No folder row has this id.
  struct FolderNotFound {
    std::int64_t folderID;
    friend bool operator==(const FolderNotFound&, const FolderNotFound&) = default;
  };
  /// No journal row has this id.
  struct JournalEntryNotFound {
    std::int64_t journalEntryID;
    friend bool operator==(const JournalEntryNotFound&, const JournalEntryNotFound&) = default;
  };
  /// A planned item shows another freshness at the moment of removal.
  struct ChangedSincePlanned {
    std::string path;
    friend bool operator==(const ChangedSincePlanned&, const ChangedSincePlanned&) = default;
  };
  /// Nothing lies at the item's path in the Bin any more.
  struct GoneFromBin {
    std::string binnedPath;
    friend bool operator==(const GoneFromBin&, const GoneFromBin&) = default;
  };
  /// Something else lies where the item should go back to.
  struct OriginalPathTaken {
    std::string path;
    friend bool operator==(const OriginalPathTaken&, const OriginalPathTaken&) = default;
  };
  /// The item didn't go to the Bin.
  struct DeletedPermanently {
    friend bool operator==(const DeletedPermanently&, const DeletedPermanently&) = default;
  };
  /// The item was put back before.
  struct AlreadyUndone {
    friend bool operator==(const AlreadyUndone&, const AlreadyUndone&) = default;
  };

  using Case = std::variant<FolderNotFound, JournalEntryNotFound, ChangedSincePlanned, GoneFromBin,
                            OriginalPathTaken, DeletedPermanently, AlreadyUndone>;

  explicit EngineFailure(Case failure);

  /// A sentence for the log; the user's words are made where the failure is shown.
  const char* what() const noexcept override { return _description.c_str(); }

  const Case& failure() const noexcept { return _failure; }
  friend bool operator==(const EngineFailure& a, const EngineFailure& b) {
    return a._failure == b._failure;
  }

 private:
  Case _failure;
  std::string _description;
};

}  // namespace tidemar
