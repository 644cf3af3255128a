#include "Platform/Files/Trash/Trash.h"

#include <cerrno>
#include <ctime>
#include <expected>
#include <string>
#include <string_view>

#include "Platform/Files/Changes/TreeBoundaries.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/Trash/TrashDirectory.h"
#include "Platform/Files/Trash/TrashName.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/Files/Walk/DirectoryStack.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* operation = "move to the Bin";

[[noreturn]] void fail(const FileURL& url, int code) {
  if (code == EXDEV) {
    throw PlatformError(operation, url, code,
                        "the part of the drive it lies on has no Bin of its own");
  }
  throw PlatformError(operation, url, code);
}

/// Puts an item into a Trash under a name that is free there, or answers an errno value.
std::expected<FileURL, int> moveInto(const TrashDirectory& trash, int parent,
                                     const std::string& itemName, std::string_view recordedPath) {
  const std::string record = trashRecordText(recordedPath, std::time(nullptr));
  for (unsigned attempt = 0; attempt < trashNameAttempts; ++attempt) {
    const std::string name = trashName(itemName, attempt, trash.longestName);
    // The record claims the name; an item without a record may still lie under it.
    int code = makeTrashRecord(trash.info.get(), name, record);
    if (code == 0) {
      code = renameWithoutReplacing(parent, itemName, trash.files.get(), name);
      if (code == 0) return trash.filesURL.appendingPathComponent(name);
      removeTrashRecord(trash.info.get(), name);
    }
    if (code != EEXIST) return std::unexpected(code);
  }
  return std::unexpected(EEXIST);
}

std::string_view pathInside(const FileURL& top, const FileURL& item) {
  std::string_view path = item.path();
  if (top.path() == "/") return path.substr(1);
  if (!path.starts_with(top.path() + "/")) fail(item, ESTALE);
  return path.substr(top.path().size() + 1);
}

}  // namespace

FileURL trashItem(const FileURL& url) {
  const FileDescriptor parent = openParent(url, operation);
  const std::string name(url.lastPathComponent());
  EntryValues values{};
  if (const int code = readEntryValues(parent.get(), "", values); code != 0) fail(url, code);
  const DirectoryIdentity directory = identityOf(values);
  if (const int code = readEntryValues(parent.get(), name.c_str(), values); code != 0) {
    fail(url, code);
  }
  refuseMountsAndSubvolumes(parent.get(), name, url, operation);
  refuseFixedPlaces(parent.get(), name, url, operation);

  const FileURL item = pathOfDescriptor(parent.get(), url, operation).appendingPathComponent(name);
  if (homeTrashDevice() == directory.device) {
    const TrashDirectory trash = openHomeTrash();
    const auto result = moveInto(trash, parent.get(), name, item.path());
    if (result) return *result;
    // One device can be mounted in several places, which a rename doesn't cross. Within one mount
    // another Trash would be as far away.
    if (result.error() != EXDEV || trash.mount == directory.mount) fail(url, result.error());
  }

  const FileDescriptor top = openMountRoot(parent.get(), url, operation);
  if (const int code = readEntryValues(top.get(), "", values); code != 0) fail(url, code);
  // A subvolume without a mount: file managers would never show a Trash inside it.
  if (identityOf(values).device != directory.device) fail(url, EXDEV);
  const FileURL topURL = pathOfDescriptor(top.get(), url, operation);
  const TrashDirectory trash = openTrashOfMount(top.get(), topURL);
  const auto result = moveInto(trash, parent.get(), name, pathInside(topURL, item));
  if (!result) fail(url, result.error());
  return *result;
}

}  // namespace tidemar
