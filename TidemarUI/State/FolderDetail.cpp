#include "TidemarUI/State/FolderDetail.h"

#include <algorithm>

#include "TidemarUI/State/Labels.h"

namespace tidemar {

bool canSetTemporary(const MainFolder& folder) {
  return folder.isReadable && (!folder.isProtectedRoot || folder.isTemporary);
}

std::optional<std::string_view> temporaryFooter(const MainFolder& folder) {
  if (!folder.isReadable)
    return "Tidemar can't read this folder. It may be on a drive that isn't connected.";
  if (folder.isProtectedRoot)
    return "Tidemar doesn't clear system folders or your Desktop, Documents and home folder.";
  return std::nullopt;
}

std::string_view rulesFooter(const TemporarySettings& settings) {
  if (settings.sizeLimit || settings.automatic)
    return "Size and disk space clear the oldest items first.";
  if (settings.maxAgeDays || settings.emptyOnRestart)
    return "An item's age counts from when it was added or last changed, whichever is later.";
  return "With no rule on, nothing is cleared.";
}

std::string_view nowExplanation(const FolderPreview& preview) {
  if (std::ranges::find(preview.forecast, labels::now, &ForecastGroup::when) ==
      preview.forecast.end())
    return {};
  return "What is listed under “Now” goes when you leave this page.";
}

bool canSetAutomatic(const TemporarySettings& settings) {
  return settings.disposal != Disposal::bin;
}

std::string automaticTooltip(const std::string& bin) {
  return "Needs Delete Permanently: moving to the " + bin + " frees no space.";
}

DisposalFooter disposalFooter(Disposal disposal, const std::string& bin) {
  if (disposal == Disposal::delete_) return {"Frees the space now. Can't be put back.", true};
  return {"You can put them back from Tidemar or the " + bin + ".", false};
}

std::string deleteConfirmationMessage(const std::string& bin) {
  return "They won't go to the " + bin + " and can't be put back.";
}

}  // namespace tidemar
