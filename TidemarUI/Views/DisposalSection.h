#pragma once

#include <QComboBox>
#include <QMessageBox>
#include <QPointer>
#include <functional>
#include <optional>
#include <string>

#include "TidemarCore/TemporarySettings.h"
#include "TidemarUI/Views/Card.h"

namespace tidemar {

/// What becomes of cleared items. The picker shows what is stored, also while the question whether
/// to delete is open.
class DisposalSection : public FormSection {
 public:
  explicit DisposalSection(std::string binName);

  /// What the user saw, and the same with another disposal; for deleting only after the user
  /// confirmed it.
  std::function<void(const TemporarySettings& shown, const TemporarySettings& wanted)>
      onChangeSettings;

  void setSettings(const TemporarySettings& settings);

  /// Hands out a choice that was made just now.
  void finishEdit();

  /// Takes the question back as if it had been cancelled.
  void cancelConfirmation();

 private:
  struct Choice {
    TemporarySettings shown;
    TemporarySettings wanted;
  };

  void confirmDelete();
  void choose(Disposal disposal);

  std::string _binName;
  TemporarySettings _settings;
  QComboBox* _picker;
  QPointer<QMessageBox> _confirmation;
  std::optional<Choice> _choice;  ///< On its way out.
};

}  // namespace tidemar
