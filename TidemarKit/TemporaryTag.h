#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/OpenFolder.h"

/// The tag that makes a folder Temporary: seen and changed by the user and by other programs, and
/// read from the disk at every call. The folder's other tags are never touched. Without state;
/// adding and removing are a read followed by a write, and of two programs that write at once the
/// last one wins.
///
/// Other programs put blanks around the tags of a list, so blanks at the ends don't count in the
/// comparison with the name; case does. What is written back of the other tags is byte for byte
/// what stood there.
namespace tidemar::TemporaryTag {

inline constexpr std::string_view name = "Tidemar: Temporary";

/// All tags of a folder as they stand. Throws `PlatformError`.
std::vector<std::string> tags(const OpenFolder& folder);

/// Whether the folder carries the tag now. Tags that can't be read answer false: what is not known
/// to be Temporary is left alone.
bool isTagged(const OpenFolder& folder) noexcept;

/// Whether a list of tags holds the name.
bool holdsName(std::span<const std::string> tags) noexcept;

/// Makes sure that the folder has the tag, behind those that it has. Writes only where it is
/// missing. Throws `PlatformError`, and the tags then stay as they were.
void add(OpenFolder& folder);

/// Makes sure that the folder doesn't have the tag, however often it stands in the list. Writes
/// only where it is there. Throws `PlatformError`, and the tags then stay as they were.
void remove(OpenFolder& folder);

}  // namespace tidemar::TemporaryTag
