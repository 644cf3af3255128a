#pragma once

#include <string>

namespace tidemar {

/// Whether everything in a tree has its equal in a copy of it: an entry of the same name, kind,
/// mode, device number, link target, size and content, and of the same modification time but for
/// the two seconds that coarse file systems round by. What is in the copy alone isn't seen.
///
/// All contents are read again, of the copy as the disk has it, since the original goes by what is
/// answered here: file systems and copying programs are known to have left zeros where data was,
/// with size and times all right. Only where both files have a hole nothing is read.
///
/// Both are given by a path without links from an open directory. Answers 0, ESTALE where they
/// differ, or the errno value for which that can't be told. Opens nothing but directories and
/// regular files.
int compareWithCopy(int directory, const std::string& path, int copyDirectory,
                    const std::string& copyPath);

}  // namespace tidemar
