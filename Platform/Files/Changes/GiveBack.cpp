#include "Platform/Files/Changes/GiveBack.h"

#include <cerrno>
#include <climits>
#include <system_error>
#include <vector>

#include <dirent.h>

#include "Platform/Files/Changes/PrivateDirectory.h"
#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/Trash/TrashName.h"
#include "Platform/Files/Walk/DirectoryReader.h"

namespace tidemar {
namespace {

constexpr unsigned mostAttempts = 1000;

struct Left {
  std::string name;
  bool isDirectory = false;
};

std::vector<Left> entriesOf(const FileDescriptor& directory) {
  std::vector<Left> entries;
  DirectoryReader reader;
  reader.start(directory.get());
  while (const auto entry = reader.next())
    entries.push_back({entry->name, entry->type == DT_DIR});
  return entries;
}

/// The entries of a place. Throws std::system_error.
std::vector<Left> entriesOfPlace(const PrivateDirectory& directory, std::size_t number) {
  FileDescriptor place;
  const int code = openDirectory(directory.descriptor(), std::to_string(number).c_str(), place);
  if (code != 0) throw std::system_error(code, std::generic_category());
  return entriesOf(place);
}

/// Opens the directory out of which the entries of a place were taken: the only one that lies in
/// the place before it. Throws std::system_error.
FileDescriptor directoryOutOf(const PrivateDirectory& directory, std::size_t number) {
  FileDescriptor above;
  if (number == 0) return above;
  const std::vector<Left> entries = entriesOfPlace(directory, number - 1);
  if (entries.size() != 1 || !entries[0].isDirectory) return above;
  const std::string path = PrivateDirectory::inPlace(number - 1, entries[0].name);
  const int code = openDirectory(directory.descriptor(), path.c_str(), above);
  if (code != 0) throw std::system_error(code, std::generic_category());
  return above;
}

}  // namespace

std::string nameBeside(std::string_view name, unsigned attempt) {
  return numberedName(name, " (" + std::to_string(attempt + 1) + ")", NAME_MAX);
}

int giveBack(int directory, const std::string& path, int folder, const std::string& name) {
  int code = renameWithoutReplacing(directory, path, folder, name);
  for (unsigned attempt = 1; code == EEXIST && attempt < mostAttempts; ++attempt)
    code = renameWithoutReplacing(directory, path, folder, nameBeside(name, attempt));
  return code;
}

bool giveBackLeft(int above, const std::string& name, int target) try {
  const auto left = PrivateDirectory::openLeft(above, name);
  if (!left) return false;
  bool hasComeBack = false;
  // The innermost first, since each lies in one that has to be whole before it goes on: where one
  // can't, all the rest waits too.
  for (std::size_t number = left->placeCount(); number-- > 0;) {
    const FileDescriptor outer = directoryOutOf(*left, number);
    for (const Left& entry : entriesOfPlace(*left, number)) {
      const std::string path = PrivateDirectory::inPlace(number, entry.name);
      const int code = giveBack(left->descriptor(), path, outer ? outer.get() : target, entry.name);
      if (code != 0) return hasComeBack;
      hasComeBack = true;
    }
  }
  return hasComeBack;
} catch (const std::system_error&) {
  // What can't be read waits for the next opening of the folder.
  return false;
}

void giveBackAllLeft(int above, int target) try {
  FileDescriptor directory;
  if (openDirectory(above, ".", directory) != 0) return;
  for (const Left& entry : entriesOf(directory)) {
    if (PrivateDirectory::isName(entry.name, PrivateDirectory::Kind::taken))
      giveBackLeft(above, entry.name, target);
  }
} catch (const std::system_error&) {
  // See above.
}

}  // namespace tidemar
