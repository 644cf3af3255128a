#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// One Trash of this user by the freedesktop Trash specification, open. Its directories are real
/// ones that belong to this user.
struct TrashDirectory {
  FileURL url;           ///< Absolute and without links, as the next three.
  FileURL topURL;        ///< The directory from which relative paths in its records go out.
  FileURL filesURL;      ///< Where the items lie.
  FileURL infoURL;       ///< Where their records lie.
  FileDescriptor trash;  ///< All three opened as places to work from.
  FileDescriptor files;
  FileDescriptor info;
  std::uint64_t device = 0;  ///< The device of `files`, and the id of its mount.
  std::uint64_t mount = 0;
  std::size_t longestName = 0;  ///< In bytes, of an item whose record's name must fit too.
};

/// The device on which the home Trash lies or would lie. Makes nothing. Throws PlatformError.
std::uint64_t homeTrashDevice();

/// The Trash in the user's data directory, made with mode 0700 where it is missing. Throws
/// PlatformError, also for one that is a link or belongs to someone else.
TrashDirectory openHomeTrash();

/// The user's Trash at the top of a mount, whose top directory is given open and by its path:
/// `.Trash/{uid}` where an administrator has made a `.Trash` that is fit for it, else
/// `.Trash-{uid}`. What is missing is made with mode 0700. Throws as above.
TrashDirectory openTrashOfMount(int topDirectory, const FileURL& topURL);

/// The Trash of this user whose `files` directory lies at this path: the one in the data directory,
/// or one at the top of a mount. None where anything else lies there, or nothing. Makes nothing.
/// Throws PlatformError where that can't be told.
std::optional<TrashDirectory> findTrash(const FileURL& filesURL);

}  // namespace tidemar
