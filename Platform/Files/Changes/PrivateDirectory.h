#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// A directory of the program's own in a folder of the user's, in which it holds for a moment what
/// is on its way: hidden, for this user alone, marked by a file in it, and locked as long as this
/// object lives (flock(2), which ends with the process however that ends). Under it stand numbered
/// places, each a directory for one entry under its own name.
class PrivateDirectory {
 public:
  enum class Kind {
    taken,  ///< What was taken out of the folder; goes back if the process dies.
    copy,   ///< Copies on their way into the folder, whose originals lie elsewhere.
  };

  /// Makes a new one in an open folder. Answers an errno value on failure; then nothing is left.
  static std::expected<PrivateDirectory, int> make(int folder, Kind kind);

  /// Opens one that a process has left which is no more. Answers an errno value, EWOULDBLOCK for
  /// one in use, EINVAL for one that isn't surely the program's own.
  static std::expected<PrivateDirectory, int> openLeft(int folder, const std::string& name);

  /// Which kind an entry of a folder is by its name; false for any other.
  static bool isName(std::string_view name, Kind kind) noexcept;

  PrivateDirectory(PrivateDirectory&&) = default;
  PrivateDirectory& operator=(PrivateDirectory&&) = delete;

  /// Removes it if nothing lies in it any more; what lies there stays for the next start.
  ~PrivateDirectory();

  int descriptor() const noexcept { return _directory.get(); }

  /// Makes the place of this number where it is missing. Answers an errno value, 0 for success.
  int makePlace(std::size_t number);

  /// An entry's path in the place of this number, from `descriptor`.
  static std::string inPlace(std::size_t number, std::string_view name);

  /// How many places have been made, or were found.
  std::size_t placeCount() const noexcept { return _placeCount; }

 private:
  PrivateDirectory(int folder, std::string name, FileDescriptor directory)
      : _folder(folder), _name(std::move(name)), _directory(std::move(directory)) {}

  static std::expected<PrivateDirectory, int> open(int folder, const std::string& name);
  int mark();
  int readContents();

  int _folder;  ///< Borrowed.
  std::string _name;
  FileDescriptor _directory;
  bool _isMarked = false;
  std::size_t _placeCount = 0;
};

}  // namespace tidemar
