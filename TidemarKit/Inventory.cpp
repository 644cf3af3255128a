#include "TidemarKit/Inventory.h"

#include <string_view>
#include <utility>

#include "TidemarCore/SaturatingArithmetic.h"

namespace tidemar::Inventory {
namespace {

bool isDirectory(const ResourceValues& values) {
  return values.isDirectory.value_or(false);
}

bool isPackage(const ResourceValues& values) {
  return values.isPackage.value_or(false);
}

bool isPlainDirectory(const ResourceValues& values) {
  return isDirectory(values) && !isPackage(values);
}

bool isHidden(const ResourceValues& values, std::string_view name) {
  return values.isHidden.value_or(false) || name.starts_with('.');
}

std::int64_t ownSize(const ResourceValues& values) {
  return values.totalFileAllocatedSize.value_or(0);
}

/// The date of what the user sees as one thing: a file, a link, a package.
std::optional<Date> dateOfFile(const ResourceValues& values) {
  return laterDate(values.addedToDirectoryDate, values.contentModificationDate);
}

/// The date of a plain directory itself. Its modification date moves whenever something is taken
/// out of it, so it stands in only where there is no added date.
std::optional<Date> dateOfPlainDirectory(const ResourceValues& values) {
  return values.addedToDirectoryDate ? values.addedToDirectoryDate : values.contentModificationDate;
}

/// Folds a directory's tree into its storage and the latest date in it, as the walk delivers it.
class DirectoryTally final : public TreeVisitor {
 public:
  DirectoryTally(const FileManager& fileManager, const FileURL& directory) {
    fileManager.walkTree(directory, *this);
  }

  /// The latest date among the entries that count for dates; none if none did.
  std::optional<Date> latest() const { return _latest; }

  /// Bytes of all entries that could be read.
  std::int64_t size() const { return _size; }

  /// False as soon as any part of the tree could not be read.
  bool isComplete() const { return _isComplete; }

  void visit(const TreeElement& element) override {
    const ResourceValues& values = element.values;
    // Before every filter below: whatever takes up storage counts for the size.
    _size = addingSaturated(_size, ownSize(values));

    if (_skippedDepth && element.depth > *_skippedDepth) return;
    _skippedDepth.reset();

    if (isHidden(values, element.name)) {
      if (isDirectory(values)) _skippedDepth = element.depth;
      return;
    }
    if (isPackage(values)) _skippedDepth = element.depth;
    _latest = laterDate(
        _latest, isPlainDirectory(values) ? dateOfPlainDirectory(values) : dateOfFile(values));
  }

  void failed(const PlatformError&) override {
    // Which part it was doesn't matter: any unread part may hold the freshest file.
    _isComplete = false;
  }

 private:
  std::optional<Date> _latest;
  std::int64_t _size = 0;
  bool _isComplete = true;

  /// Depth of the hidden directory or package whose contents don't count for dates. All that lies
  /// in it follows it directly, so what is deeper lies inside it.
  std::optional<std::size_t> _skippedDepth;
};

Item fileItem(const FileManager& fileManager, FileURL url, const ResourceValues& values) {
  const std::int64_t innerSize = isPackage(values) ? DirectoryTally(fileManager, url).size() : 0;
  return {std::move(url), dateOfFile(values), addingSaturated(ownSize(values), innerSize)};
}

Item directoryItem(const FileManager& fileManager, FileURL url, const ResourceValues& values) {
  const DirectoryTally tally(fileManager, url);
  const std::optional<Date> freshness =
      tally.isComplete() ? laterDate(dateOfPlainDirectory(values), tally.latest()) : std::nullopt;
  return {std::move(url), freshness, addingSaturated(ownSize(values), tally.size())};
}

std::optional<Item> itemUnlessHidden(const FileManager& fileManager, FileURL url,
                                     const ResourceValues& values) {
  if (isHidden(values, url.lastPathComponent())) return std::nullopt;
  return isPlainDirectory(values) ? directoryItem(fileManager, std::move(url), values)
                                  : fileItem(fileManager, std::move(url), values);
}

}  // namespace

std::vector<Item> items(const FileManager& fileManager, const FileURL& folder) {
  std::vector<Item> result;
  for (DirectoryEntry& entry : fileManager.contentsOfDirectory(folder)) {
    if (auto item = itemUnlessHidden(fileManager, std::move(entry.url), entry.values))
      result.push_back(*std::move(item));
  }
  return result;
}

std::optional<Item> item(const FileManager& fileManager, const FileURL& url) {
  return itemUnlessHidden(fileManager, url, fileManager.resourceValues(url));
}

}  // namespace tidemar::Inventory
