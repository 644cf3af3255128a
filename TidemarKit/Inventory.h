#pragma once

#include <optional>
#include <vector>

#include "Platform/Files/FileManager.h"
#include "TidemarCore/Item.h"

/// Turns what lies in a folder into the items that the rules work on. Only the top level yields
/// items: a directory or a package is one item with the storage of its whole tree. Hidden entries
/// are no items. Synchronous and reentrant; every call reads the disk anew.
namespace tidemar::Inventory {

/// All items of a folder, in the order of the listing. Throws `PlatformError` where the folder or
/// the values of one of its entries can't be read. What can't be read deeper down is no error: it
/// takes the freshness from the item that holds it.
std::vector<Item> items(const FileManager& fileManager, const FileURL& folder);

/// The item at this place as `items` would give it; none when the entry is hidden. Throws
/// `PlatformError` where nothing lies there or its values can't be read.
std::optional<Item> item(const FileManager& fileManager, const FileURL& url);

}  // namespace tidemar::Inventory
