#pragma once

#include <string>

namespace tidemar {

/// The command "Tidemar: Make Temporary…" in the menu of one file manager, for this user alone.
/// Reads the disk anew each time. Any thread, one at a time.
class MenuEntry {
 public:
  virtual ~MenuEntry() = default;

  /// The file manager's name, for the user.
  virtual std::string name() const = 0;

  /// Whether the file manager is on this machine.
  virtual bool isAvailable() const = 0;

  /// Whether what `install` writes is there, in its present form or an older one. False where that
  /// can't be read.
  virtual bool isInstalled() const = 0;

  /// Adds the command, or brings an older form of it up to date. Throws `PlatformError`, above all
  /// where a file stands in the way that isn't Tidemar's; that file stays as it is.
  virtual void install() = 0;

  /// Takes away what `install` wrote and nothing else; folders stay. Throws `PlatformError`.
  virtual void uninstall() = 0;
};

}  // namespace tidemar
