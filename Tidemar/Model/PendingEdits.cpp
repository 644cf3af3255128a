#include "Tidemar/Model/PendingEdits.h"

#include <iterator>

namespace tidemar {
namespace {

/// `settings` with what differs between `shown` and `wanted` as it is wanted.
void apply(TemporarySettings& settings, const TemporarySettings& shown,
           const TemporarySettings& wanted) {
  const auto take = [&](auto TemporarySettings::*field) {
    if (shown.*field != wanted.*field) settings.*field = wanted.*field;
  };
  take(&TemporarySettings::maxAgeDays);
  take(&TemporarySettings::sizeLimit);
  take(&TemporarySettings::automatic);
  take(&TemporarySettings::emptyOnRestart);
  take(&TemporarySettings::disposal);
}

}  // namespace

PendingEdits::Number PendingEdits::add(std::int64_t folderID, const TemporarySettings& shown,
                                       const TemporarySettings& wanted) {
  const std::lock_guard lock(_mutex);
  _edits[++_last] = {folderID, shown, wanted};
  return _last;
}

void PendingEdits::write(Store& store, Number number) {
  // Held while the row is written: another thread's edit comes wholly before or behind this one.
  const std::lock_guard lock(_mutex);
  const auto edit = _edits.find(number);
  if (edit == _edits.end()) return;
  const std::int64_t folderID = edit->second.folderID;
  const auto end = std::next(edit);
  try {
    store.change(folderID, [&](Folder& row) {
      for (auto earlier = _edits.begin(); earlier != end; ++earlier) {
        if (earlier->second.folderID == folderID)
          apply(row.settings, earlier->second.shown, earlier->second.wanted);
      }
    });
  } catch (...) {
    _edits.erase(edit);
    throw;
  }
  for (auto written = _edits.begin(); written != end;)
    written = written->second.folderID == folderID ? _edits.erase(written) : std::next(written);
}

}  // namespace tidemar
