#pragma once

#include <cstdint>
#include <vector>

#include "Tidemar/Model/AppModel.h"

namespace tidemar {

/// A command from its acceptance to the end of its work. The end of the process waits for it; a
/// folder that it makes known, Temporary or plain is kept from being cleared by any cycle that was
/// under way meanwhile.
class AppModel::CommandScope {
 public:
  explicit CommandScope(AppModel& model) : _model(model) { ++_model._commandsUnderWay; }
  ~CommandScope() {
    _model._toLetGo.insert(_model._toLetGo.end(), _heldBack.begin(), _heldBack.end());
    if (--_model._commandsUnderWay == 0 && _model._commandsEnded) _model._commandsEnded->happen();
  }
  CommandScope(const CommandScope&) = delete;
  CommandScope& operator=(const CommandScope&) = delete;

  void holdBack(std::int64_t folderID) {
    _model._runGate->holdBack(folderID);
    wasHeldBack(folderID);
  }

  /// The command's work has done so itself.
  void wasHeldBack(std::int64_t folderID) { _heldBack.push_back(folderID); }

 private:
  AppModel& _model;
  std::vector<std::int64_t> _heldBack;
};

}  // namespace tidemar
