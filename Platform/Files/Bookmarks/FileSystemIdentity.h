#pragma once

#include <cstdint>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// What tells a file system from others, wherever and whenever it is mounted.
struct FileSystemIdentity {
  /// How far the value can be trusted to belong to one file system alone, best first.
  enum class Kind : std::uint8_t {
    uuid = 1,  ///< The value is the UUID as text, or the shorter number that takes its place.
    number,    ///< The value is the file system's own number (f_fsid).
    type,      ///< The value is only what type of file system it is.
  };
  Kind kind = Kind::type;
  std::string value;

  friend bool operator==(const FileSystemIdentity&, const FileSystemIdentity&) = default;
};

/// The best identity that can be had of the file system of an open directory (not O_PATH). Throws
/// PlatformError, made of the operation and the item for which it is asked.
FileSystemIdentity fileSystemIdentity(int directory, const FileURL& url,
                                      const std::string& operation);

}  // namespace tidemar
