#include <algorithm>
#include <utility>

#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/Detached.h"
#include "TidemarUI/State/FailureLine.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SystemBin.h"

namespace tidemar {
namespace {

/// The folder's row as it stands: a run, a move of the folder or another command may have changed
/// it since the screen was drawn that the command came from.
Folder currentRow(const Engine& engine, const Folder& shown) {
  return shown.id ? engine.store().folder(*shown.id).value_or(shown) : shown;
}

}  // namespace

QCoro::Task<std::optional<Folder>> AppModel::addFolder(FileURL url) {
  const auto add = [engine = _engine, url, now = _services.currentDate()] {
    return engine->addFolder(url, now);
  };
  std::optional<Folder> folder;
  try {
    folder = co_await detached(add);
  } catch (const std::exception& error) {
    showFailure(addingFolder(url.path()), error);
    co_return std::nullopt;
  }
  co_await refreshReports();
  co_return folder;
}

QCoro::Task<void> AppModel::setTemporary(Folder folder, bool isTemporary) {
  const auto set = [engine = _engine, gate = _runGate, folder, isTemporary,
                    now = _services.currentDate()] {
    // A tag without its moment in the row would have the last restart empty the folder.
    const RunGate::Passage passage(*gate);
    if (gate->isClosed()) return;
    engine->setTemporary(currentRow(*engine, folder), isTemporary, now);
  };
  try {
    co_await detached(set);
  } catch (const std::exception& error) {
    showFailure(settingTemporary(folder.path, isTemporary), error);
  }
  co_await refreshReports();

  // The first Temporary folder is the moment to ask.
  const auto isTagged = [](const FolderReport& report) {
    return report.status && report.status->isTagged;
  };
  if (isTemporary && std::ranges::count_if(_reports, isTagged) == 1)
    requestNotificationPermission();
}

QCoro::Task<void> AppModel::removeFolder(Folder folder) {
  const auto forget = [engine = _engine, folder] { engine->forget(folder); };
  try {
    co_await detached(forget);
  } catch (const std::exception& error) {
    showFailure(removingFolder(folder.path), error);
  }
  co_await refreshReports();
}

QCoro::Task<void> AppModel::changeSettings(Folder folder, TemporarySettings settings) {
  const auto change = [engine = _engine, folder, settings] {
    engine->store().change(folder.id, [&](Folder& row) { row.settings = settings; });
  };
  try {
    co_await detached(change);
  } catch (const std::exception& error) {
    showFailure(changingSettings(), error);
  }
  co_await refreshReports();
}

QCoro::Task<void> AppModel::putBack(std::vector<std::int64_t> journalEntryIDs) {
  std::vector<std::string> lines;
  for (const std::int64_t id : journalEntryIDs) {
    const auto undo = [engine = _engine, gate = _runGate, id, now = _services.currentDate()] {
      const RunGate::Passage passage(*gate);
      // The process may end at any moment from now on, between the move and its record too.
      if (!gate->isClosed()) engine->undo(id, now);
    };
    try {
      co_await detached(undo);
    } catch (const std::exception& error) {
      lines.push_back(failureLine(error, SystemBin::name()));
    }
  }
  if (!lines.empty()) {
    _services.alerts.run({.message = std::string(labels::someItemsNotPutBack),
                          .information = putBackFailureText(std::move(lines))});
  }
  co_await refreshReports();
}

}  // namespace tidemar
