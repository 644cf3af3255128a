#pragma once

#include <sqlite3.h>

#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/RemovalLedger.h"
#include "TidemarKit/Store/Store.h"
#include "support/Testing.h"

namespace tidemar::testing {

using Rows = std::vector<std::string>;

/// What a call fails with.
inline DatabaseError databaseErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const DatabaseError& error) {
    return error;
  }
  throw std::logic_error("it didn't fail");
}

/// The primary result code that a call throws; none if it succeeds.
inline std::optional<int> databaseCodeOf(const std::function<void()>& call) {
  try {
    call();
    return std::nullopt;
  } catch (const DatabaseError& error) {
    EXPECT_TRUE(std::string_view(error.what()).starts_with("Couldn't ")) << error.what();
    EXPECT_FALSE(std::string_view(error.what()).contains("Success")) << error.what();
    return error.code() & 0xff;
  }
}

/// A ledger over a store in a file in a directory of its own, under $TMPDIR or at the top of a
/// disk.
struct LedgerWorld {
  explicit LedgerWorld(std::chrono::milliseconds patience = {}, const std::string& disk = {})
      : parent(disk), store(path, patience) {}

  JournalEntry row(const std::string& name, Disposal disposal = Disposal::bin) const {
    JournalEntry entry = entryOf(folder, name);
    entry.disposal = disposal;
    return entry;
  }
  Rows names() const { return runSQL(path, "SELECT name FROM journalEntry ORDER BY id"); }

  TemporaryDirectory parent;
  std::string directory = (mkdir(parent.path("Tidemar").c_str(), 0700), parent.path("Tidemar"));
  std::string path = directory + "/tidemar.sqlite";
  std::string aside = path + ".aside";
  Store store;
  RemovalLedger ledger{store};
  Folder folder = store.insert(folderAt("/f"));
  std::optional<OtherProgram> other;
};

}  // namespace tidemar::testing
