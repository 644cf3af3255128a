#include "Tidemar/SettingsWriter.h"

namespace tidemar {

TemporarySettings settingsWithEdit(TemporarySettings current, const TemporarySettings& before,
                                   const TemporarySettings& after) {
  const auto take = [&](auto TemporarySettings::*field) {
    if (before.*field != after.*field) current.*field = after.*field;
  };
  take(&TemporarySettings::maxAgeDays);
  take(&TemporarySettings::sizeLimit);
  take(&TemporarySettings::automatic);
  take(&TemporarySettings::emptyOnRestart);
  take(&TemporarySettings::disposal);
  return current;
}

QCoro::Task<void> SettingsWriter::write(Folder folder, TemporarySettings edited) {
  if (!folder.id) co_return;
  const std::int64_t id = *folder.id;
  if (const auto underWay = _wanted.find(id); underWay != _wanted.end()) {
    underWay->second = settingsWithEdit(underWay->second, folder.settings, edited);
    co_return;
  }
  _wanted[id] = edited;
  for (bool isDone = false; !isDone;) {
    const TemporarySettings settings = _wanted[id];
    co_await _model.changeSettings(folder, settings);
    isDone = _wanted[id] == settings;
  }
  _wanted.erase(id);
}

}  // namespace tidemar
