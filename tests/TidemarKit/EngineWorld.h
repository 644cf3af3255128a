#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"
#include "support/FileExpectations.h"

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

/// An engine over a disk and a store that a test has in hand.
struct EngineWorld {
  static constexpr Date added{1000};  ///< When the folders of these tests became known.
  static constexpr Date now{2000};

  /// With a store in memory, or in a file of its own.
  EngineWorld() : EngineWorld(std::make_unique<Store>()) {}
  explicit EngineWorld(std::unique_ptr<Store> store) : engine(std::move(store), files) {}

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

  FakeFileManager files;
  Engine engine;
};

using Lines = std::vector<std::string>;

}  // namespace tidemar::testing
