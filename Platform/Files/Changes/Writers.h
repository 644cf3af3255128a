#pragma once

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// Opens a regular file so that nobody writes to it unnoticed: holds a read lease on it (fcntl(2),
/// F_SETLEASE), which the kernel refuses while anyone has the file open for writing or mapped
/// writable, and for which it lets a later writer wait until the descriptor is closed. Answers
/// ETXTBSY where there is a writer; 0 otherwise.
///
/// Where no lease can tell (a file that can't be read or is another user's, a file system that has
/// none or answers for its server), the answer is 0 as well, with or without a descriptor: then the
/// dates of the file have to do.
int openUnlessWritten(int directory, const char* name, FileDescriptor& file) noexcept;

}  // namespace tidemar
