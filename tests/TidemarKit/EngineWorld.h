#pragma once

#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {

/// The case of the engine's failure that `operation` ends in.
template <class Operation>
Engine::Failure::Case failureOf(Operation operation) {
  try {
    operation();
  } catch (const Engine::Failure& failure) {
    return failure.failure();
  }
  throw std::logic_error("it didn't fail");
}

/// An engine over a disk and a database that a test has in hand.
struct EngineWorld {
  static constexpr Date added{1000};  ///< When the folders of these tests became known.
  static constexpr Date now{2000};

  /// Makes a folder on the disk known, sets its rules and tags it.
  Folder temporaryFolder(const std::string& path, const TemporarySettings& settings) {
    Folder folder = engine.addFolder(FileURL(path), added);
    folder.settings = settings;
    engine.store().update(folder);
    files.tags(path) = {std::string(TemporaryTag::name)};
    files.operations().clear();
    return folder;
  }

  /// The row as it stands.
  Folder row(const Folder& folder) { return engine.store().folder(*folder.id).value(); }

  /// Changes the database as another program does.
  void alter(const std::string& sql) const { runSQL(database, sql); }

  TemporaryDirectory directory;
  std::string database = directory.path("tidemar.sqlite");
  FakeFileManager files;
  Engine engine{std::make_unique<Store>(database, std::chrono::milliseconds(50)), files};
};

using Lines = std::vector<std::string>;

}  // namespace tidemar::testing
