#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

#include "Platform/Extension/MenuEntry.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// A file that Tidemar writes whole. Its content holds `ownershipMark`, by which the file is known
/// as Tidemar's in whatever version it was written.
struct OwnedFile {
  FileURL url;
  std::string content;
  mode_t mode = 0600;
};

/// The command as a file of its own, for a file manager that may go by any of several programs.
/// There may be several forms of the file, each in its own place: the first is the one to write,
/// and only one is there at a time.
class FileMenuEntry : public MenuEntry {
 public:
  FileMenuEntry(std::string name, std::vector<std::string> programs, std::vector<OwnedFile> forms);

  std::string name() const override { return _name; }
  bool isAvailable() const override;
  bool isInstalled() const override;
  void install() override;
  void uninstall() override;

 private:
  std::string _name;
  std::vector<std::string> _programs;
  std::vector<OwnedFile> _forms;
};

}  // namespace tidemar
