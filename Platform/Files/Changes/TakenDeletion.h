#pragma once

#include <optional>
#include <string>

#include "Platform/Files/Changes/PrivateDirectory.h"
#include "Platform/Files/ItemState.h"
#include "Platform/Files/Walk/FolderReading.h"
#include "Platform/Files/Walk/KeptDirectories.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Deletes entries of one open directory for good. Each is taken out of its place into a private
/// directory by one rename, compared with what had been looked at, and only then deleted, entry by
/// entry. Where there is no room for that it is deleted where it lies, compared all the same. For
/// one thread.
class TakenDeletion {
 public:
  /// `directory` holds the entries, `above` is where the private directory is made: the same one,
  /// or another of its file system. What a killed process leaves there must be given back into
  /// `directory` later. Both are borrowed, as `kept` is. `operation` is the verb of the errors.
  TakenDeletion(int directory, int above, const KeptDirectories& kept, std::string operation)
      : _directory(directory), _above(above), _kept(kept), _operation(std::move(operation)) {}

  /// Deletes one entry, which lies at `url` now. Throws PlatformError, ItemChanged where it wasn't
  /// what had been looked at; then it, or what is left of it, lies in the directory again, under
  /// its name or beside it. Where the failure says that it couldn't be put back, it waits whole in
  /// the private directory for the next opening of the folder.
  void run(const ItemState& item, const FileURL& url);

 private:
  int take(const ItemState& item, const FileURL& url);
  [[noreturn]] void failToTake(const FileURL& url, int code) const;
  [[noreturn]] void fail(const FileURL& url, int code) const;

  int _directory;
  int _above;
  const KeptDirectories& _kept;
  std::string _operation;
  std::optional<PrivateDirectory> _taken;  ///< Made when the first entry is to be deleted.
  std::optional<FolderReading> _reading;   ///< Of that.
};

}  // namespace tidemar
