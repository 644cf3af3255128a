#include "Platform/Desktop/AutostartLoginItem.h"

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "Platform/Desktop/AutostartEntry.h"
#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

FileURL entryFile() {
  return StandardDirectories::configuration()
      .appendingPathComponent("autostart")
      .appendingPathComponent("app.quernly.tidemar.desktop");
}

/// The kind of what lies there, at the end of a link.
std::filesystem::file_status kindOf(const FileURL& file) {
  std::error_code error;
  return std::filesystem::status(file.path(), error);
}

/// Empty where there is none that the desktop could read.
std::string entryText() {
  const FileURL file = entryFile();
  // Reading anything else might wait for ever.
  if (!std::filesystem::is_regular_file(kindOf(file))) return {};
  try {
    return WholeFile::read(file).value_or("");
  } catch (const PlatformError&) {
    // The desktop can't read it either.
    return {};
  }
}

}  // namespace

AutostartLoginItem::AutostartLoginItem(FileURL program) : _program(std::move(program)) {}

LoginItem::Status AutostartLoginItem::status() const {
  return AutostartEntry::status(entryText());
}

void AutostartLoginItem::registerItem() {
  const std::string before = entryText();
  // A hidden entry may have no switch but ours; the others are the desktop's settings' to turn.
  if (AutostartEntry::status(before) != Status::off && !AutostartEntry::isHidden(before)) return;
  const FileURL file = entryFile();
  const auto kind = kindOf(file);
  if (std::filesystem::exists(kind) && !std::filesystem::is_regular_file(kind)) {
    throw PlatformError("write", file, EEXIST, "something else than a file lies there");
  }
  const std::string text = AutostartEntry::text(_program);
  createDirectory(file.deletingLastPathComponent());
  WholeFile::replace(file, text);
}

void AutostartLoginItem::unregisterItem() {
  const FileURL file = entryFile();
  if (unlink(file.path().c_str()) != 0 && errno != ENOENT) {
    throw PlatformError("remove", file, errno);
  }
}

FileURL currentProgram() {
  std::error_code error;
  return FileURL(std::filesystem::read_symlink("/proc/self/exe", error).string());
}

}  // namespace tidemar
