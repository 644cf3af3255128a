#pragma once

#include <string>

#include "Platform/Locale/Formats.h"
#include "TidemarCore/TemporarySettings.h"
#include "TidemarKit/FolderReport.h"

namespace tidemar {

/// A folder's rules in one line: "30 days, under 5 GB, on restart · Bin", or "No rules on".
std::string rulesText(const TemporarySettings& settings, const Formats& formats,
                      const std::string& bin);

/// How far a folder is from losing something, such as "Oldest goes in 9 days". A folder with a size
/// limit shows how full it is, unless something is due now.
std::string distanceText(const FolderReport& report, Date now, const Formats& formats);

}  // namespace tidemar
