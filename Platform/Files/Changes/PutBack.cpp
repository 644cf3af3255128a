#include "Platform/Files/Changes/PutBack.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/Trash/TrashDirectory.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/PlatformError.h"
#include "Platform/Text.h"

namespace tidemar {
namespace {

constexpr const char* operation = "put back";

class DiskBinnedItem : public BinnedItem {
 public:
  DiskBinnedItem(TrashDirectory trash, FileURL place, std::string name, int folder)
      : _trash(std::move(trash)),
        _place(std::move(place)),
        _name(std::move(name)),
        _folder(folder) {}

  void putBack() override {
    const std::string binnedName(_place.lastPathComponent());
    const int code = renameWithoutReplacing(_trash.files.get(), binnedName, _folder, _name);
    if (code != 0) throw PlatformError(operation, _place, code);
    forgetTrashedItem(_trash.files.get(), binnedName);
  }

 private:
  TrashDirectory _trash;
  FileURL _place;
  std::string _name;
  int _folder;
};

}  // namespace

std::unique_ptr<BinnedItem> openBinnedItem(const FileURL& place, const std::string& name,
                                           int folder, const FileURL& folderURL) {
  const FileURL bin = place.deletingLastPathComponent();
  TrashDirectory trash = openHomeTrash();
  if (trash.filesURL != bin) {
    const FileURL topURL = bin.deletingLastPathComponent().deletingLastPathComponent();
    const FileDescriptor top = openDirectoryAt(topURL, operation);
    trash = openTrashOfMount(top.get(), topURL);
    if (trash.filesURL != bin) return nullptr;
  }
  EntryValues values{};
  const std::string binnedName(place.lastPathComponent());
  if (readEntryValues(trash.files.get(), binnedName.c_str(), values) != 0) return nullptr;
  (void)folderURL;
  return std::make_unique<DiskBinnedItem>(std::move(trash), place, name, folder);
}

void sweepLeftCopy(int folder, const std::string& name) noexcept {
  (void)folder;
  (void)name;
}

}  // namespace tidemar
