#include "TidemarKit/Engine/Failure.h"

#include <utility>

namespace tidemar {
namespace {

struct Describe {
  std::string operator()(const EngineFailure::FolderNotFound& failure) const {
    return "no folder has the id " + std::to_string(failure.folderID);
  }
  std::string operator()(const EngineFailure::JournalEntryNotFound& failure) const {
    return "no journal entry has the id " + std::to_string(failure.journalEntryID);
  }
  std::string operator()(const EngineFailure::ChangedSincePlanned&) const {
    return "the item changed since it was planned";
  }
  std::string operator()(const EngineFailure::GoneFromBin&) const {
    return "the item is no longer in the Bin";
  }
  std::string operator()(const EngineFailure::OriginalPathTaken&) const {
    return "something else lies at the original place";
  }
  std::string operator()(const EngineFailure::DeletedPermanently&) const {
    return "the item was deleted permanently";
  }
  std::string operator()(const EngineFailure::AlreadyUndone&) const {
    return "the item was already put back";
  }
};

}  // namespace

EngineFailure::EngineFailure(Case failure)
    : _failure(std::move(failure)), _description(std::visit(Describe{}, _failure)) {}

}  // namespace tidemar
