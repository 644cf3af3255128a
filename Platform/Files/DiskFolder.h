#pragma once

#include <memory>
#include <optional>

#include "Platform/Files/Changes/ItemRemoval.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Places/AnsweringPaths.h"
#include "Platform/Files/Places/MountTable.h"
#include "Platform/Files/Walk/FolderReading.h"
#include "Platform/Files/Walk/HiddenList.h"
#include "Platform/Files/Walk/KeptDirectories.h"

namespace tidemar {

/// A folder on the real disk.
class DiskFolder : public OpenFolder {
 public:
  /// `directory` is open for reading; `url` is where it lies, without links.
  DiskFolder(FileDescriptor directory, FileURL url, std::shared_ptr<MountTableReader> mounts);

  const FileURL& url() const override { return _url; }
  std::string bookmarkData() const override;
  bool isRememberedBy(std::string_view bookmark) const override;
  bool isOneOf(std::span<const FileURL> places) const override;
  VolumeCapacity volumeCapacity() const override;
  std::vector<std::string> tagNames() const override;
  void setTagNames(std::span<const std::string> tags) override;
  void setKnownFolders(std::shared_ptr<const KnownFolders> known) override;
  void giveBackTaken() override;
  void read(TreeVisitor& visitor) override;
  ItemState look(std::string_view name, Disposal disposal, TreeVisitor& visitor) override;
  bool hasEntry(std::string_view name) const override;
  std::optional<FileURL> trashItem(const ItemState& item) override;
  void removeItem(const ItemState& item) override;
  std::unique_ptr<BinnedItem> binnedItem(const FileURL& place, std::string_view name) override;

 private:
  /// What other directories there were at the first question after one of them.
  struct Surroundings {
    Mounts mounts;
    AnsweringPaths paths;
  };

  Surroundings& surroundings() const;
  bool giveBack(const std::vector<std::string>& left);
  const KeptDirectories& kept();
  FileURL currentURL() const;
  FileURL placeOf(const ItemState& item);
  bool isMountedBelow(std::string_view name) const;
  bool isHidden(std::string_view name);
  ItemRemoval& removal();

  FileDescriptor _directory;
  FileURL _url;
  std::shared_ptr<const KnownFolders> _known = std::make_shared<KnownFolders>();

  // What a run needs again and again.
  std::shared_ptr<MountTableReader> _mounts;
  mutable std::optional<Surroundings> _surroundings;
  HiddenListReader _hiddenNames;
  std::optional<KeptDirectories> _kept;
  std::optional<Holder> _holder;
  std::optional<FileURL> _place;  ///< Where it was last found to lie, outside of any Bin.
  std::optional<FolderReading> _looks;
  std::optional<ItemRemoval> _removal;
};

}  // namespace tidemar
