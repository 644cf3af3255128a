#include "Platform/Extension/FileMenuEntry.h"

#include <algorithm>
#include <cerrno>
#include <span>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Extension/EntryTexts.h"
#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

bool isOurs(const OwnedFile& file) {
  const auto content = WholeFile::read(file.url);
  return content && content->find(ownershipMark) != std::string::npos;
}

void write(const OwnedFile& file) {
  if (WholeFile::read(file.url) && !isOurs(file)) {
    throw PlatformError("replace", file.url, EEXIST, "it is there already and isn't Tidemar's");
  }
  createDirectory(file.url.deletingLastPathComponent());
  WholeFile::replace(file.url, file.content);
  if (chmod(file.url.path().c_str(), file.mode) != 0) throw PlatformError("write", file.url, errno);
}

void removeOurs(std::span<const OwnedFile> files) {
  for (const OwnedFile& file : files) {
    if (isOurs(file) && unlink(file.url.path().c_str()) != 0)
      throw PlatformError("remove", file.url, errno);
  }
}

}  // namespace

FileMenuEntry::FileMenuEntry(std::string name, std::function<bool()> isAvailable,
                             std::vector<OwnedFile> forms)
    : _name(std::move(name)), _isAvailable(std::move(isAvailable)), _forms(std::move(forms)) {}

bool FileMenuEntry::isInstalled() const {
  return std::ranges::any_of(_forms, [](const OwnedFile& file) {
    try {
      return isOurs(file);
    } catch (const PlatformError&) {
      return false;  // what the user can't read, the file manager can't either
    }
  });
}

void FileMenuEntry::install() {
  write(_forms.front());
  removeOurs(std::span(_forms).subspan(1));
}

void FileMenuEntry::uninstall() {
  removeOurs(_forms);
}

}  // namespace tidemar
