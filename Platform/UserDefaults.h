#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The values that are kept under keys between launches, one suite a file: a JSON object that other
/// programs may read at any moment, since it is always replaced as a whole.
///
/// Keeps nothing in memory: every operation reads the file anew. Any thread may read; two writers
/// of one suite at a time, in this program or another, can lose the value of one of them.
///
/// A file that isn't a JSON object, and one that is nested or filled as no suite is, reads as
/// empty, and the next write keeps it beside the new one with ".damaged" behind its name.
class UserDefaults {
 public:
  /// The suite of a file, which need not be there yet.
  explicit UserDefaults(FileURL file);

  /// The program's own suite.
  static UserDefaults standard();

  /// The suite that the file-manager extension reads.
  static UserDefaults shared();

  // None where the key is missing, has a value of another type, or the file can't be read.

  std::optional<std::string> string(std::string_view key) const;
  std::optional<bool> boolean(std::string_view key) const;
  std::optional<std::vector<std::string>> stringArray(std::string_view key) const;

  // What changes nothing writes nothing. Other keys keep their values, whatever these are. Bytes
  // that aren't UTF-8 are stored as U+FFFD. All throw `PlatformError` where the file can't be read
  // or written, and leave it as it was.

  void setString(std::string_view key, std::string_view value);
  void setBoolean(std::string_view key, bool value);
  void setStringArray(std::string_view key, std::span<const std::string> values);
  void remove(std::string_view key);

 private:
  FileURL _file;
};

}  // namespace tidemar
