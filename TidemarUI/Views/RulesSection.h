#pragma once

#include <functional>
#include <string>

#include "Platform/Locale/Formats.h"
#include "TidemarCore/TemporarySettings.h"
#include "TidemarUI/State/SystemNames.h"
#include "TidemarUI/Views/Card.h"

namespace tidemar {

class RuleRow;

/// The rules by which a folder is cleared: a check box each, two of them with a number.
class RulesSection : public FormSection {
 public:
  RulesSection(const Formats& formats, const std::string& binName, const SystemNames& names);

  /// What the user saw when an edit began, and the same with just what was edited changed.
  std::function<void(const TemporarySettings& shown, const TemporarySettings& wanted)>
      onChangeSettings;

  void setSettings(const TemporarySettings& settings);

  /// Hands out a number that is being edited.
  void finishEdits();

 private:
  RuleRow* addRule(std::string_view label,
                   TemporarySettings (*edit)(TemporarySettings settings, bool isOn));
  void addNumber(RuleRow& row, const Formats& formats, std::string_view label,
                 TemporarySettings (*edit)(TemporarySettings settings, std::int64_t number));
  void send(const TemporarySettings& shown, const TemporarySettings& wanted) const;

  TemporarySettings _settings;
  RuleRow* _age;
  RuleRow* _size;
  RuleRow* _automatic;
  RuleRow* _restart;
};

}  // namespace tidemar
