#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TidemarCore/FileURL.h"

/// Small files, read and written as a whole.
namespace tidemar::WholeFile {

/// The content of a file; none where nothing lies there. Throws `PlatformError` where it can't be
/// read.
std::optional<std::string> read(const FileURL& file);

/// Gives a file its content in one step, in a directory that is there: a reader at any moment, and
/// the disk after a crash, has the old file or the new one and never a part. The new one can be
/// read by its owner alone. A link is followed and stays. Throws `PlatformError` and leaves the old
/// file and nothing else where it can't.
void replace(const FileURL& file, std::string_view content);

}  // namespace tidemar::WholeFile
