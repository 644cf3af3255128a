#pragma once

#include <optional>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The package that installed a program, by dpkg's list of the files of the package of the
/// program's own name; none if the program came another way or dpkg's lists aren't there. `lists`
/// is the directory of dpkg's lists.
std::optional<std::string> packageOfProgram(const FileURL& program,
                                            const FileURL& lists = FileURL("/var/lib/dpkg/info"));

}  // namespace tidemar
