#include "TidemarUI/State/FolderTexts.h"

#include <cctype>
#include <cstdint>

#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/DayWords.h"
#include "TidemarUI/State/Labels.h"

namespace tidemar {

std::string rulesText(const TemporarySettings& settings, const Formats& formats,
                      const std::string& bin) {
  std::string text;
  const auto append = [&text](const std::string& piece) {
    if (!text.empty()) text += ", ";
    text += piece;
  };
  if (settings.maxAgeDays) append(std::to_string(*settings.maxAgeDays) + " days");
  if (settings.sizeLimit) append("under " + formats.byteCountText(*settings.sizeLimit));
  if (settings.automatic) append("when disk is low");
  if (settings.emptyOnRestart) append("on restart");
  if (text.empty()) return "No rules on";

  text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
  return text + " · " + (settings.disposal == Disposal::delete_ ? "Delete" : bin);
}

std::string distanceText(const FolderReport& report, Date now, const Formats& formats) {
  if (!report.status) return std::string(labels::cannotReadFolder);
  const FolderStatus& status = *report.status;
  const TemporarySettings& settings = report.folder.settings;
  if (!status.isTagged) return "Off";
  if (!status.dueNow.empty())
    return itemsGo(static_cast<std::int64_t>(status.dueNow.size()), "now");
  if (settings.sizeLimit)
    return formats.byteCountText(status.totalSize()) + " of " +
           formats.byteCountText(*settings.sizeLimit);
  if (!status.upcoming.empty())
    return "Oldest goes " + dayPhrase(status.upcoming.front().date, now, formats.calendar());
  if (settings.emptyOnRestart && !status.items.empty()) return "Clears on restart";
  if (settings.automatic) return "Clears when disk is low";
  return "Nothing to clear";
}

}  // namespace tidemar
