#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/FolderLink.h"

namespace tidemar {

void AppModel::publishTemporaryPaths() {
  constexpr const char* key = "temporaryFolderPaths";
  std::vector<std::string> paths;
  for (const FolderReport& report : _reports) {
    if (report.status && report.status->isTagged) paths.push_back(report.folder.path);
  }
  try {
    _services.sharedDefaults.setStringArray(key, paths);
  } catch (const std::exception&) {
    // Who reads the list then keeps the last one; nothing else rests on it.
  }
}

QCoro::Task<std::optional<FileURL>> AppModel::open(std::string url) {
  const std::optional<FileURL> folderURL = folderOfLink(url);
  if (!folderURL) co_return std::nullopt;

  const std::optional<Folder> folder = co_await addFolder(*folderURL);
  if (!folder) co_return std::nullopt;
  const FolderReport* report = reportForFolderAt(*folderURL);
  if (report == nullptr || !report->status || !report->status->isTagged)
    co_await setTemporary(*folder, true);
  co_return folderURL;
}

}  // namespace tidemar
