#include "Tidemar/Model/CommandScope.h"
#include "Tidemar/Model/FolderLink.h"

namespace tidemar {

void AppModel::publishTemporaryPaths() {
  constexpr const char* key = "temporaryFolderPaths";
  try {
    _services.sharedDefaults.setStringArray(key, temporaryPaths(*_snapshot));
  } catch (const std::exception&) {
    // Who reads the list then keeps the last one; nothing else rests on it.
  }
}

QCoro::Task<std::optional<FileURL>> AppModel::followLink(std::string url) {
  const std::optional<FileURL> folderURL = folderOfLink(url);
  if (!folderURL) co_return std::nullopt;

  const CommandScope scope(*this);
  const std::optional<Folder> folder = co_await addFolder(*folderURL);
  if (!folder || !folder->id) co_return std::nullopt;
  const FolderReport* report = reportForFolder(*folder->id);
  if (report == nullptr || !isTemporary(*report)) co_await setTemporary(*folder, true);
  co_return FileURL(folder->path);
}

}  // namespace tidemar
