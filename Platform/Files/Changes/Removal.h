#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Deletes an item with all that lies in it; see FileManager::removeItem.
void removeItem(const FileURL& url);

}  // namespace tidemar
