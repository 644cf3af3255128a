#include "TidemarUI/State/SettingsEdits.h"

#include <algorithm>

namespace tidemar {
namespace {

constexpr std::int64_t defaultAgeDays = 90;
constexpr std::int64_t minAgeDays = 1;
constexpr std::int64_t maxAgeDays = 3650;

constexpr std::int64_t gigabyte = 1'000'000'000;
constexpr std::int64_t defaultSizeLimit = 10 * gigabyte;
constexpr std::int64_t minGigabytes = 1;
constexpr std::int64_t maxGigabytes = 100'000;

std::int64_t roundedToGigabytes(std::int64_t bytes) {
  const std::int64_t rest = bytes % gigabyte;
  return bytes / gigabyte + (rest >= gigabyte / 2 ? 1 : 0) - (rest <= -gigabyte / 2 ? 1 : 0);
}

}  // namespace

NumberField ageField(const TemporarySettings& settings) {
  return {.isEnabled = settings.maxAgeDays.has_value(),
          .value = settings.maxAgeDays.value_or(defaultAgeDays),
          .lowerBound = minAgeDays,
          .upperBound = maxAgeDays,
          .unit = "days"};
}

NumberField sizeField(const TemporarySettings& settings) {
  return {.isEnabled = settings.sizeLimit.has_value(),
          .value = roundedToGigabytes(settings.sizeLimit.value_or(defaultSizeLimit)),
          .lowerBound = minGigabytes,
          .upperBound = maxGigabytes,
          .unit = "GB"};
}

TemporarySettings settingsWithAgeRule(TemporarySettings settings, bool isOn) {
  settings.maxAgeDays = isOn ? std::optional(defaultAgeDays) : std::nullopt;
  return settings;
}

TemporarySettings settingsWithMaxAgeDays(TemporarySettings settings, std::int64_t days) {
  settings.maxAgeDays = std::clamp(days, minAgeDays, maxAgeDays);
  return settings;
}

TemporarySettings settingsWithSizeRule(TemporarySettings settings, bool isOn) {
  settings.sizeLimit = isOn ? std::optional(defaultSizeLimit) : std::nullopt;
  return settings;
}

TemporarySettings settingsWithSizeLimit(TemporarySettings settings, std::int64_t gigabytes) {
  settings.sizeLimit = std::clamp(gigabytes, minGigabytes, maxGigabytes) * gigabyte;
  return settings;
}

TemporarySettings settingsWithAutomatic(TemporarySettings settings, bool isOn) {
  settings.automatic = isOn;
  return settings;
}

TemporarySettings settingsWithEmptyOnRestart(TemporarySettings settings, bool isOn) {
  settings.emptyOnRestart = isOn;
  return settings;
}

TemporarySettings settingsWithDisposal(TemporarySettings settings, Disposal disposal) {
  settings.disposal = disposal;
  if (disposal == Disposal::bin) settings.automatic = false;
  return settings;
}

}  // namespace tidemar
