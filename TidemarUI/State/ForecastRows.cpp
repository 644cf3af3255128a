#include "TidemarUI/State/ForecastRows.h"

#include <algorithm>
#include <cstdint>

#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {

std::vector<ForecastSection> forecastSections(std::span<const ForecastGroup> groups) {
  std::vector<ForecastSection> sections;
  for (auto first = groups.begin(); first != groups.end();) {
    const auto last = std::find_if(
        first, groups.end(), [&](const ForecastGroup& g) { return g.action != first->action; });
    sections.push_back({first->action, first->isPermanent, {first, last}});
    first = last;
  }
  return sections;
}

std::string rowSummary(const ForecastGroup& group) {
  return countedItems(static_cast<std::int64_t>(group.items.size())) + " · " + group.totalSize;
}

std::string rowNames(const ForecastGroup& group) {
  constexpr std::size_t shown = 2;
  std::string names;
  for (const FileURL& item : std::span(group.items).first(std::min(shown, group.items.size()))) {
    if (!names.empty()) names += ", ";
    names += nameOfPath(item.path());
  }
  if (group.items.size() > shown)
    names += " and " + std::to_string(group.items.size() - shown) + " more";
  return names;
}

}  // namespace tidemar
