#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Platform/Files/OpenFolder.h"
#include "TidemarCore/Disposal.h"
#include "TidemarCore/Item.h"

/// Turns what lies in a folder into the items that the rules work on. Only the top level yields
/// items: a directory or a package is one item with the storage of its whole tree. Hidden entries
/// are no items. Synchronous; every call reads the disk anew.
///
/// An item that is, or holds at any depth, another folder that the program knows and that carries
/// the Temporary tag has no freshness: its own rules decide over its content.
namespace tidemar::Inventory {

/// All items of a folder, in the order of the listing. Throws `PlatformError` where the folder or
/// the values of one of its entries can't be read. What can't be read deeper down is no error: it
/// takes the freshness from the item that holds it.
std::vector<Item> items(OpenFolder& folder);

/// One entry as it is now.
struct Look {
  std::optional<Item> item;  ///< As `items` would give it; none when the entry is hidden.
  ItemState state;           ///< What its removal is to be bound to.
};

/// Looks at the entry of this name before it goes this way. Throws `PlatformError` where nothing
/// lies there or its values can't be read.
Look item(OpenFolder& folder, std::string_view name, Disposal disposal);

}  // namespace tidemar::Inventory
