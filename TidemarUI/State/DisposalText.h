#pragma once

#include <string>

#include "TidemarCore/Disposal.h"

namespace tidemar {

/// How items go, as the user reads it: "Delete Permanently" or "Move to {bin}".
std::string disposalText(Disposal disposal, const std::string& bin);

}  // namespace tidemar
