#include "support/FolderActions.h"

#include "Platform/Files/DiskFileManager.h"

namespace tidemar::testing {
namespace {

/// Keeps what lies directly in the folder.
class Listing : public TreeVisitor {
 public:
  explicit Listing(const FileURL& folder) : _folder(folder) {}
  void visit(const TreeElement& element) override {
    if (element.depth == 0)
      entries.push_back({_folder.appendingPathComponent(element.name), element.values});
  }
  void failed(int) override {}
  void restart() override { entries.clear(); }
  void knownFolder(std::span<const std::string>) override {}

  std::vector<ListedEntry> entries;

 private:
  FileURL _folder;
};

std::unique_ptr<OpenFolder> folderOf(const FileURL& item) {
  return DiskFileManager().openFolder(item.deletingLastPathComponent());
}

ItemState look(OpenFolder& folder, const FileURL& url, Disposal disposal) {
  Listing listing(folder.url());
  ItemState item = folder.look(url.lastPathComponent(), disposal, listing);
  if (item.obstacle) throw PlatformError(*item.obstacle);
  return item;
}

}  // namespace

void removeItem(const FileURL& url) {
  const auto folder = folderOf(url);
  folder->removeItem(look(*folder, url, Disposal::delete_));
}

FileURL trashItem(const FileURL& url) {
  const auto folder = folderOf(url);
  return folder->trashItem(look(*folder, url, Disposal::bin)).value();
}

std::vector<ListedEntry> listDirectory(const FileURL& directory) {
  Listing listing(directory);
  DiskFileManager().openFolder(directory)->read(listing);
  return listing.entries;
}

ResourceValues readResourceValues(const FileURL& url) {
  Listing listing(url.deletingLastPathComponent());
  folderOf(url)->look(url.lastPathComponent(), Disposal::bin, listing);
  return listing.entries.at(0).values;
}

std::vector<std::string> readTagNames(const FileURL& directory) {
  return DiskFileManager().openFolder(directory)->tagNames();
}

void writeTagNames(const FileURL& directory, std::span<const std::string> tags) {
  DiskFileManager().openFolder(directory)->setTagNames(tags);
}

std::string makeBookmark(const FileURL& directory) {
  return DiskFileManager().openFolder(directory)->bookmarkData();
}

ResolvedBookmark resolveBookmark(std::string_view bookmark) {
  const OpenedBookmark opened = DiskFileManager().openBookmark(bookmark);
  return {opened.folder->url(), opened.isStale, opened.isReplacement};
}

}  // namespace tidemar::testing
