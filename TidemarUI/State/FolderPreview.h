#pragma once

#include <string>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarKit/FolderReport.h"
#include "TidemarUI/State/ForecastGroup.h"

namespace tidemar {

/// What the detail screen shows of a folder's future.
struct FolderPreview {
  std::string headline;                 ///< One sentence over the forecast.
  std::vector<ForecastGroup> forecast;  ///< The folder's groups, those of the restart included.

  friend bool operator==(const FolderPreview&, const FolderPreview&) = default;
};

FolderPreview folderPreview(const FolderReport& report, Date now, const Formats& formats,
                            const std::string& bin);

}  // namespace tidemar
