#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QString>
#include <vector>

#include "TidemarCore/FileURL.h"

/// The desktop's file manager. Main thread, which stays free.
namespace tidemar::FileViewer {

/// Shows items selected in their folders, all in one request; where each would get a window of its
/// own, one item of each folder. Where no file manager takes such a request, their folders are
/// opened. Items that have gone are left out; if all have, the nearest folders above them that are
/// still there are shown. Done once the file manager took the request. Never fails: where nothing
/// can show a folder, nothing happens. `startupID` lets the file manager's window come forward;
/// empty for none.
QCoro::Task<void> showItems(QDBusConnection sessionBus, std::vector<FileURL> items,
                            QString startupID = {});

/// The same by the session's own bus, without waiting for it.
void show(const std::vector<FileURL>& items);

}  // namespace tidemar::FileViewer
