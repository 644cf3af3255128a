#include <algorithm>
#include <memory>
#include <utility>

#include "Tidemar/Model/CommandScope.h"
#include "Tidemar/Model/Failures.h"
#include "TidemarUI/State/FailureLine.h"
#include "TidemarUI/State/Labels.h"

namespace tidemar {
namespace {

/// The folder's row as it stands: a run, a move of the folder or another command may have changed
/// it since the screen was drawn that the command came from. Throws where it was forgotten since:
/// no folder is to be Temporary that isn't known.
Folder currentRow(const Engine& engine, const Folder& shown) {
  if (!shown.id) throw MissingValue();
  std::optional<Folder> row = engine.store().folder(*shown.id);
  if (!row) throw Engine::Failure(Engine::Failure::FolderNotFound{*shown.id});
  return *std::move(row);
}

/// Whether an adding of that date has made the row itself: one that is found has the date of its
/// own.
bool isNew(const Folder& folder, Date now) {
  return folder.createdAt == now;
}

}  // namespace

QCoro::Task<std::optional<Folder>> AppModel::addFolder(FileURL url) {
  const auto folder = std::make_shared<std::optional<Folder>>();
  {
    CommandScope scope(*this);
    const Date now = _services.currentDate();
    const auto add = [engine = _engine, gate = _runGate, url, now, folder] {
      *folder = engine->addFolder(url, now);
      if (isNew(**folder, now)) gate->holdBack((*folder)->id.value());
    };
    if (const Caught caught = co_await carryOut(add)) {
      showFailure(addingFolder(url.path()), caught.error);
      co_return std::nullopt;
    }
    if (isNew(**folder, now)) scope.wasHeldBack((*folder)->id.value());
  }
  co_await refreshReports();
  co_return *folder;
}

QCoro::Task<void> AppModel::setTemporary(Folder folder, bool isTemporary) {
  {
    CommandScope scope(*this);
    // One that is made plain, too: another program may tag it again at once.
    if (folder.id) scope.holdBack(*folder.id);
    const auto set = [engine = _engine, gate = _runGate, folder, isTemporary,
                      now = _services.currentDate()] {
      // A tag without its moment in the row would have the last restart empty the folder.
      const RunGate::Passage passage(*gate);
      if (gate->isShut()) return;
      engine->setTemporary(currentRow(*engine, folder), isTemporary, now);
    };
    if (const Caught caught = co_await carryOut(set))
      showFailure(settingTemporary(folder.path, isTemporary), caught.error);
  }
  co_await refreshReports();

  // The first Temporary folder is the moment to ask.
  if (isTemporary && std::ranges::count_if(reports(), tidemar::isTemporary) == 1)
    requestNotificationPermission();
}

QCoro::Task<void> AppModel::removeFolder(Folder folder) {
  {
    const CommandScope scope(*this);
    const auto forget = [engine = _engine, folder] { engine->forget(folder); };
    if (const Caught caught = co_await carryOut(forget))
      showFailure(removingFolder(folder.path), caught.error);
  }
  co_await refreshReports();
}

QCoro::Task<void> AppModel::changeSettings(std::int64_t folderID, TemporarySettings shown,
                                           TemporarySettings wanted) {
  {
    const CommandScope scope(*this);
    const auto change = [engine = _engine, edits = _edits,
                         number = _edits->add(folderID, shown, wanted)] {
      edits->write(engine->store(), number);
    };
    if (const Caught caught = co_await carryOut(change)) {
      showFailure(changingSettings(), caught.error);
    } else {
      co_await showPresentRules(folderID);
    }
  }
  co_await refreshReports();
}

QCoro::Task<void> AppModel::putBack(std::vector<std::int64_t> journalEntryIDs) {
  {
    const CommandScope scope(*this);
    // Pressed again while the screen doesn't show the end yet, it would fail for what succeeded.
    std::erase_if(journalEntryIDs, [this](std::int64_t id) { return !_putBack.insert(id).second; });
    std::vector<std::string> lines;
    for (const std::int64_t id : journalEntryIDs) {
      const auto undo = [engine = _engine, gate = _runGate, id, now = _services.currentDate()] {
        const RunGate::Passage passage(*gate);
        // The process may end at any moment from now on, between the move and its record too.
        if (!gate->isShut()) engine->undo(id, now);
      };
      if (const Caught caught = co_await carryOut(undo)) {
        lines.push_back(lineForUser(caught.error));
        _putBack.erase(id);
      }
    }
    if (!lines.empty()) {
      _services.alerts.run({.message = std::string(labels::someItemsNotPutBack),
                            .information = putBackFailureText(std::move(lines))});
    }
  }
  co_await refreshReports();
}

}  // namespace tidemar
