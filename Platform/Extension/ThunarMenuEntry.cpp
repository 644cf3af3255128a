#include "Platform/Extension/ThunarMenuEntry.h"

#include <cerrno>
#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Extension/EntryTexts.h"
#include "Platform/Extension/ProgramSearch.h"
#include "Platform/Extension/ThunarActions.h"
#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* relativePath = "/Thunar/uca.xml";

/// The actions that Thunar shows to a user who has no file of their own.
std::string systemList() {
  const char* variable = std::getenv("XDG_CONFIG_DIRS");
  std::string_view directories =
      variable == nullptr || *variable == '\0' ? "/etc/xdg" : std::string_view(variable);
  while (!directories.empty()) {
    const std::string_view directory = directories.substr(0, directories.find(':'));
    directories.remove_prefix(std::min(directory.size() + 1, directories.size()));
    if (!directory.starts_with('/')) continue;
    if (auto list = WholeFile::read(FileURL(std::string(directory) + relativePath))) return *list;
  }
  return std::string(ThunarActions::emptyList);
}

/// Unlike a new file, one that is there keeps its permissions.
void replaceContent(const FileURL& file, std::string_view content) {
  struct stat before {};
  const bool isThere = stat(file.path().c_str(), &before) == 0;
  WholeFile::replace(file, content);
  if (isThere && chmod(file.path().c_str(), before.st_mode & 07777U) != 0)
    throw PlatformError("write", file, errno);
}

void remove(const FileURL& file) {
  if (unlink(file.path().c_str()) != 0) throw PlatformError("remove", file, errno);
}

[[noreturn]] void refuse(const FileURL& file, const ThunarActions::Malformed& error) {
  throw PlatformError("change", file, EINVAL,
                      std::string(error.what()) + "; please repair or remove it");
}

}  // namespace

ThunarMenuEntry::ThunarMenuEntry(const FileURL& helper)
    : _command(thunarCommand(helper)),
      _file(StandardDirectories::configuration().path() + relativePath),
      _backup(_file.path() + ".before-tidemar") {}

bool ThunarMenuEntry::isAvailable() const {
  return hasProgram("thunar");
}

bool ThunarMenuEntry::isInstalled() const {
  try {
    const auto list = WholeFile::read(_file);
    return list && ThunarActions::containsOurs(*list);
  } catch (const std::runtime_error&) {
    return false;  // what can't be read here, Thunar can't read either
  }
}

void ThunarMenuEntry::install() try {
  const auto before = WholeFile::read(_file);
  const std::string after = ThunarActions::addingOurs(before ? *before : systemList(), _command);
  if (after == before) return;
  createDirectory(_file.deletingLastPathComponent());
  // A list that has the command already is no list from before it.
  if (before && !ThunarActions::containsOurs(*before)) WholeFile::replace(_backup, *before);
  replaceContent(_file, after);
} catch (const ThunarActions::Malformed& error) {
  refuse(_file, error);
}

void ThunarMenuEntry::uninstall() try {
  const auto list = WholeFile::read(_file);
  if (!list || !ThunarActions::containsOurs(*list)) return;
  const std::string others = ThunarActions::removingOurs(*list);
  const auto isOnlyOursMoreThan = [&](const std::string& before) {
    return others == ThunarActions::removingOurs(ThunarActions::addingOurs(before, _command));
  };

  if (const auto backup = WholeFile::read(_backup)) {
    if (isOnlyOursMoreThan(*backup)) {
      replaceContent(_file, *backup);
      remove(_backup);
    } else {
      replaceContent(_file, others);
    }
  } else if (isOnlyOursMoreThan(systemList())) {
    remove(_file);
  } else {
    replaceContent(_file, others);
  }
} catch (const ThunarActions::Malformed& error) {
  refuse(_file, error);
}

}  // namespace tidemar
