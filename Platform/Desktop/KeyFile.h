#pragma once

#include <string_view>
#include <vector>

/// Files of groups of keys, in the form of the freedesktop Desktop Entry specification: desktop
/// entries, and the lists that tell which program opens what.
namespace tidemar::KeyFile {

struct Entry {
  std::string_view key;
  std::string_view value;  ///< As it stands, escapes included.
};

/// The keys of a group in the order of the file, without blanks around them; comments and what is
/// no key are left out. The views point into `text`.
std::vector<Entry> entriesOfGroup(std::string_view text, std::string_view group);

/// The value of a key in a group; empty where there is none. A view into `text`.
std::string_view value(std::string_view text, std::string_view group, std::string_view key);

}  // namespace tidemar::KeyFile
