#include "TidemarUI/State/FolderPreview.h"

#include <cstdint>

#include "TidemarUI/State/ForecastGroups.h"
#include "TidemarUI/State/Headlines.h"
#include "TidemarUI/State/Labels.h"

namespace tidemar {

FolderPreview folderPreview(const std::optional<FolderStatus>& status,
                            const TemporarySettings& settings, Date now, const Formats& formats,
                            const std::string& bin) {
  if (!status) return {.headline = std::string(labels::cannotReadFolder), .forecast = {}};

  const ForecastFolder folder{settings, *status};
  FolderPreview preview;
  preview.forecast = forecastGroups({&folder, 1}, now, formats, bin);
  std::int64_t count = 0;
  for (const ForecastGroup& group : preview.forecast) {
    if (!group.isAtRestart) count += static_cast<std::int64_t>(group.items.size());
  }
  preview.headline = previewHeadline(*status, count, now, formats.calendar());
  return preview;
}

}  // namespace tidemar
