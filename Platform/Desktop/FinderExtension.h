#pragma once

namespace tidemar {

/// The file managers' command "Tidemar: Make Temporary…". Main thread.
class FinderExtension {
 public:
  virtual ~FinderExtension() = default;

  /// Whether any file manager on this machine offers the command.
  virtual bool isEnabled() const = 0;
};

}  // namespace tidemar
