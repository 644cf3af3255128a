#pragma once

#include <span>
#include <string>
#include <vector>

#include "TidemarUI/State/ForecastGroup.h"

namespace tidemar {

/// Neighbouring groups of one action, under one title. Borrows the groups.
struct ForecastSection {
  std::string title;
  bool isPermanent = false;
  std::span<const ForecastGroup> groups;  ///< Never empty; a row each.
};

/// Divides a forecast wherever the action changes.
std::vector<ForecastSection> forecastSections(std::span<const ForecastGroup> groups);

/// How much a row stands for: "1 item · 12 kB".
std::string rowSummary(const ForecastGroup& group);

/// The first two names, and how many more there are: "a.txt, b.txt and 3 more".
std::string rowNames(const ForecastGroup& group);

}  // namespace tidemar
