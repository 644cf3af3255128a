#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "TidemarCore/Date.h"
#include "TidemarCore/TemporarySettings.h"

namespace tidemar {

/// A folder that the program knows: a row of the table `folder`. A value; a change of it reaches
/// the database only through an update. Whether the folder is Temporary doesn't stand here: that is
/// the tag on the folder itself.
struct Folder {
  std::optional<std::int64_t> id;  ///< The row id; none until inserted.
  std::string bookmark;            ///< Bytes by which the folder is found again.
  std::string path;                ///< Its path when last resolved, in the file system's bytes.
  TemporarySettings settings;
  Date createdAt;
  Date lastRunAt;

  friend bool operator==(const Folder&, const Folder&) = default;
};

}  // namespace tidemar
