#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Whether a path is that of the directory `files` of a Trash, by the names that the freedesktop
/// Trash specification gives: `Trash/files`, `.Trash-{uid}/files` or `.Trash/{uid}/files`.
bool isTrashFilesDirectory(const FileURL& url);

/// Whether a path leads into a Trash, at any depth, or is one. Looks at names alone.
bool liesInTrash(const FileURL& url);

}  // namespace tidemar
