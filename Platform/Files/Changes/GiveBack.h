#pragma once

#include <string>
#include <string_view>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Lays an entry of an open directory (by its path from there) into an open folder, under its name
/// or, where that is taken meanwhile, beside it as "name (2)", "name (3)", …, before the ending of
/// a file's name. Replaces nothing. Answers 0 or an errno value; then the entry is where it was.
int giveBack(int directory, const std::string& path, int folder, const std::string& name);

/// The name beside which an item comes back at this attempt, the first being 2: at most 255 bytes.
std::string nameBeside(std::string_view name, unsigned attempt);

/// Lays back into the open directory `target` all that a process that is no more had taken into the
/// private directory of this name in `above`: an item that was being deleted as what is left of it.
/// One that is in use, and one that isn't surely the program's own, is left alone. Answers whether
/// anything came back.
bool giveBackLeft(int above, const std::string& name, int target);

/// Does so with every such directory in `above`, an open Trash; what can't be read waits for the
/// next time.
void giveBackAllLeft(int above, int target);

}  // namespace tidemar
