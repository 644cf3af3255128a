#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TidemarCore/Disposal.h"
#include "TidemarCore/TemporarySettings.h"
#include "TidemarUI/State/MainState.h"

namespace tidemar {

/// Whether the switch "Temporary" can be used. A tag that a protected folder carries, which another
/// program may have set, can be taken off.
bool canSetTemporary(const MainFolder& folder);

/// What stands under that switch, if anything does.
std::optional<std::string_view> temporaryFooter(const MainFolder& folder);

/// What stands under the rules.
std::string_view rulesFooter(const TemporarySettings& settings);

/// Explains "Now" where the forecast has it, and is empty elsewhere. The page doesn't show it; it
/// comes with the pointer and to screen readers.
std::string_view nowExplanation(const FolderPreview& preview);

/// Whether "The disk is nearly full" can be switched.
bool canSetAutomatic(const TemporarySettings& settings);

/// The tooltip of that row, whether it can be switched or not.
std::string automaticTooltip(const std::string& bin);

/// What stands under the picker of the disposal.
struct DisposalFooter {
  std::string text;
  bool isWarning = false;

  friend bool operator==(const DisposalFooter&, const DisposalFooter&) = default;
};

DisposalFooter disposalFooter(Disposal disposal, const std::string& bin);

/// What the question before going over to deleting says under its title.
std::string deleteConfirmationMessage(const std::string& bin);

}  // namespace tidemar
