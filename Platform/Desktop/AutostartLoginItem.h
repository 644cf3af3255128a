#pragma once

#include "Platform/Desktop/LoginItem.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The login item as an autostart entry of the user's,
/// $XDG_CONFIG_HOME/autostart/app.quernly.tidemar.desktop. It is written only on request, and the
/// choice that the user made in the desktop's settings is never changed: an entry that is switched
/// off there requires approval until it is switched on there. What a desktop wouldn't start (no
/// file, a link to nothing, a file that can't be read or holds no entry) is off.
class AutostartLoginItem : public LoginItem {
 public:
  /// `program` is the absolute path of what the entry starts.
  explicit AutostartLoginItem(FileURL program);

  Status status() const override;

  /// Writes the entry where there is none. Throws `PlatformError`.
  void registerItem() override;

  /// Takes the entry away, whatever it says. Throws `PlatformError`.
  void unregisterItem() override;

 private:
  FileURL _program;
};

/// The absolute path of the program that runs in this process, empty where the system doesn't tell.
/// Ask at the start: once the file was replaced there is no path any more.
FileURL currentProgram();

}  // namespace tidemar
