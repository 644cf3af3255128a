#pragma once

#include <memory>
#include <vector>

#include "Platform/Extension/MenuEntry.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The places where system-wide libraries lie; the Python loaders of the file managers are looked
/// for below these.
std::vector<FileURL> systemLibraryDirectories();

/// One entry for each file manager that Tidemar knows, on this machine or not, in the order to show
/// them. `helper` is the program that they run; it gets the selected folders as its arguments, each
/// a path or a "file:" URI.
std::vector<std::unique_ptr<MenuEntry>> menuEntries(
    const FileURL& helper,
    const std::vector<FileURL>& libraryDirectories = systemLibraryDirectories());

/// Whether PCManFM, where it is on this machine, shows the entry that PCManFM-Qt reads.
bool canExtendPCManFM(const FileURL& helper,
                      const std::vector<FileURL>& libraryDirectories = systemLibraryDirectories());

}  // namespace tidemar
