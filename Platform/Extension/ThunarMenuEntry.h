#pragma once

#include <string>

#include "Platform/Extension/MenuEntry.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The command among Thunar's custom actions, which lie in one file with those of the user.
///
/// The file as it was is kept beside it with ".before-tidemar" behind its name as long as the
/// command is on; it is put back whole if the user changed nothing else meanwhile. Where the user
/// has no such file yet, it begins with what Thunar would show otherwise.
class ThunarMenuEntry : public MenuEntry {
 public:
  explicit ThunarMenuEntry(const FileURL& helper);

  std::string name() const override { return "Thunar"; }
  bool isAvailable() const override;
  bool isInstalled() const override;
  void install() override;
  void uninstall() override;

 private:
  std::string _command;
  FileURL _file;
  FileURL _backup;
};

}  // namespace tidemar
