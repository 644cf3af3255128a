#pragma once

#include <vector>

#include "TidemarCore/FileURL.h"

/// The desktop's file manager. Main thread; nothing here waits for an answer.
namespace tidemar::FileViewer {

/// Asks it to show these items selected in their folder. Where no file manager can be asked, the
/// folder of the first is opened. What has vanished meanwhile is the file manager's to tell.
void show(const std::vector<FileURL>& items);

}  // namespace tidemar::FileViewer
