#include "Platform/Desktop/AutostartEntry.h"

#include <algorithm>
#include <cerrno>

#include "Platform/Desktop/KeyFile.h"
#include "Platform/Extension/Quoting.h"
#include "Platform/PlatformError.h"
#include "Platform/Text.h"

namespace tidemar::AutostartEntry {
namespace {

/// One argument of an `Exec` line, in quotes where it needs them.
std::string argument(std::string_view path) {
  constexpr std::string_view reserved = " \t\n\"'\\><~|&;$*?#()`";
  return path.find_first_of(reserved) == path.npos ? keyFileEscaped(path) : desktopExecQuoted(path);
}

bool hides(const KeyFile::Entry& entry) {
  return entry.key == "Hidden" && entry.value == "true";
}

/// Whether a pair of key and value is a switch of a desktop's settings, and set to off. GNOME and
/// what came of it, and MATE, have keys of their own; the others use the standard one.
bool switchesOff(const KeyFile::Entry& entry) {
  const auto& [key, value] = entry;
  if (hides(entry)) return true;
  return (key == "X-GNOME-Autostart-enabled" || key == "X-MATE-Autostart-enabled") &&
         value == "false";
}

}  // namespace

std::string text(const FileURL& program) {
  const std::string path = program.path();
  if (!path.starts_with('/')) {
    throw PlatformError("open at login", program, EINVAL, "its place on the disk isn't known");
  }
  // A percent sign could be doubled, but GLib and systemd look for the program under that name.
  if (path.find_first_of("=%") != path.npos) {
    throw PlatformError("open at login", program, EINVAL, "its path has “=” or “%” in it");
  }
  if (displayText(path) != path) {
    throw PlatformError("open at login", program, EINVAL, "its path isn't in UTF-8");
  }
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=Tidemar\n"
         "Icon=app.quernly.tidemar\n"
         "Exec=" +
         argument(path) + " " + std::string(loginArgument) +
         "\n"
         "TryExec=" +
         keyFileEscaped(path) +
         "\n"
         "StartupNotify=false\n";
}

bool isHidden(std::string_view text) {
  return std::ranges::any_of(KeyFile::entriesOfGroup(text, "Desktop Entry"), hides);
}

LoginItem::Status status(std::string_view text) {
  bool startsSomething = false;
  bool isSwitchedOff = false;
  for (const KeyFile::Entry& entry : KeyFile::entriesOfGroup(text, "Desktop Entry")) {
    if (entry.key == "Exec" && !entry.value.empty()) startsSomething = true;
    if (switchesOff(entry)) isSwitchedOff = true;
  }
  if (isSwitchedOff) return LoginItem::Status::requiresApproval;
  return startsSomething ? LoginItem::Status::enabled : LoginItem::Status::off;
}

}  // namespace tidemar::AutostartEntry
