#pragma once

#include <cstdint>
#include <string_view>

#include "TidemarCore/TemporarySettings.h"

namespace tidemar {

/// What a field for a whole number shows.
struct NumberField {
  bool isEnabled = false;  ///< Its rule is on.
  std::int64_t value = 0;  ///< As stored, and so possibly outside of the bounds.
  std::int64_t lowerBound = 0;
  std::int64_t upperBound = 0;
  std::string_view unit;

  friend bool operator==(const NumberField&, const NumberField&) = default;
};

/// The days of the age rule; those of a fresh rule while it is off.
NumberField ageField(const TemporarySettings& settings);

/// The limit of the size rule, rounded to whole gigabytes of 1,000,000,000 bytes; that of a fresh
/// rule while it is off.
NumberField sizeField(const TemporarySettings& settings);

// What an edit makes of the settings: just what is named changes. Switching a rule on starts with
// its default, whatever it was before. Numbers are brought to the nearest bound of their field.

TemporarySettings settingsWithAgeRule(TemporarySettings settings, bool isOn);
TemporarySettings settingsWithMaxAgeDays(TemporarySettings settings, std::int64_t days);
TemporarySettings settingsWithSizeRule(TemporarySettings settings, bool isOn);
TemporarySettings settingsWithSizeLimit(TemporarySettings settings, std::int64_t gigabytes);
TemporarySettings settingsWithAutomatic(TemporarySettings settings, bool isOn);
TemporarySettings settingsWithEmptyOnRestart(TemporarySettings settings, bool isOn);

/// Going over to the Bin switches the low-disk rule off, since it needs deleting; going over to
/// deleting doesn't bring it back.
TemporarySettings settingsWithDisposal(TemporarySettings settings, Disposal disposal);

}  // namespace tidemar
