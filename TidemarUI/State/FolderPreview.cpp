#include "TidemarUI/State/FolderPreview.h"

#include <cstdint>

#include "TidemarUI/State/ForecastGroups.h"
#include "TidemarUI/State/Headlines.h"
#include "TidemarUI/State/Labels.h"

namespace tidemar {

FolderPreview folderPreview(const FolderReport& report, Date now, const Formats& formats,
                            const std::string& bin) {
  const auto& status = report.status;
  if (!status) return {.headline = std::string(labels::cannotReadFolder), .forecast = {}};

  const ForecastFolder folder{report.folder.settings, *status, report.left};
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
