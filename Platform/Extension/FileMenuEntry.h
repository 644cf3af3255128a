#pragma once

#include <functional>
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

/// The command as a file of its own. There may be several forms of the file, each in its own place:
/// the first is the one to write, and only one is there at a time.
class FileMenuEntry : public MenuEntry {
 public:
  /// `isAvailable` tells anew each time whether there is a file manager that reads the file.
  FileMenuEntry(std::string name, std::function<bool()> isAvailable, std::vector<OwnedFile> forms);

  std::string name() const override { return _name; }
  bool isAvailable() const override { return _isAvailable(); }
  bool isInstalled() const override;
  void install() override;
  void uninstall() override;

 private:
  std::string _name;
  std::function<bool()> _isAvailable;
  std::vector<OwnedFile> _forms;
};

}  // namespace tidemar
