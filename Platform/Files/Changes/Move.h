#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Moves an item to a place where nothing lies yet (else EEXIST); see FileManager::moveItem. Within
/// a file system that is one step. To another one the item is copied with all its metadata to a
/// hidden temporary name beside its new place, written out to the disk, brought to its place in one
/// step and only then deleted where it was; if it holds another mount or subvolume it is refused.
///
/// On failure the item is where it was and nothing is at the new place, but for one case: if the
/// complete copy is in place and the original can't be deleted, or the copy's name can't be written
/// to the disk, that failure is thrown and both are left.
///
/// An item that leaves a Trash takes its record there with it.
void moveItem(const FileURL& from, const FileURL& to);

}  // namespace tidemar
