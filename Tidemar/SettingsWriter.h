#pragma once

#include <cstdint>
#include <map>

#include "Tidemar/Model/AppModel.h"

namespace tidemar {

/// Hands edits of folders' settings to the model. An edit is made on what the screen shows, which
/// is behind while an earlier one is being written: so only what it changed is taken from it, and
/// the edits of one folder are written one after the other. Main thread.
class SettingsWriter {
 public:
  explicit SettingsWriter(AppModel& model) : _model(model) {}

  /// `edited` is made out of the settings of `folder`.
  QCoro::Task<void> write(Folder folder, TemporarySettings edited);

 private:
  AppModel& _model;
  std::map<std::int64_t, TemporarySettings> _wanted;  ///< Of folders that are being written.
};

/// `current` with what differs between `before` and `after` as it is in `after`.
TemporarySettings settingsWithEdit(TemporarySettings current, const TemporarySettings& before,
                                   const TemporarySettings& after);

}  // namespace tidemar
