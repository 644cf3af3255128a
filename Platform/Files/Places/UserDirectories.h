#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// One of the directories that the user's desktop gives a purpose.
struct UserDirectory {
  std::string name;  ///< "DESKTOP", "DOCUMENTS", "DOWNLOAD" and so on.
  FileURL url;       ///< Under the name it has in the user's language.

  friend bool operator==(const UserDirectory&, const UserDirectory&) = default;
};

/// The user's directories by `user-dirs.dirs` of the configuration directory, in its order, read
/// anew each time; empty where there is no such file. A purpose that the user has switched off,
/// which leads to the home itself, is left out.
std::vector<UserDirectory> userDirectories();

/// The directories in the text of such a file, for this home. A line of another form or with a
/// NUL is passed over.
std::vector<UserDirectory> parseUserDirectories(std::string_view text, const FileURL& home);

}  // namespace tidemar
