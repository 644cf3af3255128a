#pragma once

#include <cstdint>
#include <exception>
#include <span>
#include <string>
#include <variant>

#include "Platform/Files/FileManager.h"
#include "Platform/Files/OpenFolder.h"

/// Facts about the computer that planning needs. Synchronous, reentrant and without state: each
/// call asks anew. A fact that can't be had is thrown; no value is ever made up.
namespace tidemar::System {

/// A fact that could not be had.
class Failure : public std::exception {
 public:
  /// The volume didn't report both of its capacities.
  struct UnknownCapacity {
    FileURL url;  ///< The URL that was asked about.
    friend bool operator==(const UnknownCapacity&, const UnknownCapacity&) = default;
  };
  /// The time of the last start could not be read.
  struct UnknownBootTime {
    std::int32_t code;  ///< An errno value.
    friend bool operator==(const UnknownBootTime&, const UnknownBootTime&) = default;
  };

  using Case = std::variant<UnknownCapacity, UnknownBootTime>;

  explicit Failure(Case failure);

  /// A sentence for the log, without the path.
  const char* what() const noexcept override { return _description.c_str(); }

  const Case& failure() const noexcept { return _failure; }
  friend bool operator==(const Failure& a, const Failure& b) { return a._failure == b._failure; }

 private:
  Case _failure;
  std::string _description;
};

/// Both capacities of a volume in bytes.
struct Capacity {
  std::int64_t available = 0;  ///< What an ordinary user may still write.
  std::int64_t total = 0;

  friend bool operator==(const Capacity&, const Capacity&) = default;
};

/// The capacities of the volume on which this folder lies. Throws `PlatformError` where they can't
/// be read, and `Failure` where the volume doesn't report them.
Capacity capacity(const OpenFolder& folder);

/// When the computer last started. Throws `Failure`.
Date bootTime(const FileManager& fileManager);

/// Whether this folder is one of `protectedRootURLs`, told by what it is and not by its path. What
/// lies inside one of these is not.
bool isProtectedRoot(const OpenFolder& folder, const FileURL& home,
                     std::span<const FileURL> volumes);

}  // namespace tidemar::System
