#pragma once

#include <string>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Opens a directory by its name in another one. Follows no link, and doesn't cross into another
/// mount (EXDEV), nor ask it for anything: a dead network mount would never answer. Answers an
/// errno value, 0 for success.
int openDirectory(int parent, const char* name, FileDescriptor& result) noexcept;

/// What came of opening a directory together with its values.
struct DirectoryOpening {
  bool hasValues = false;
  int code = 0;  ///< Why it isn't open, EXDEV for another mount or subvolume; 0 if it is.
};

/// Opens a directory as above and reads its values, from its own descriptor if it can be opened. Of
/// another mount or subvolume neither is answered.
DirectoryOpening openDirectoryWithValues(int parent, const char* name,
                                         const DirectoryIdentity& parentIdentity,
                                         FileDescriptor& result, EntryValues& values) noexcept;

/// Opens the directory at a path, links followed. Never waits: what isn't a directory isn't opened.
/// Throws PlatformError, also for a path with a NUL in it.
FileDescriptor openDirectoryAt(const FileURL& url, const std::string& operation);

}  // namespace tidemar
