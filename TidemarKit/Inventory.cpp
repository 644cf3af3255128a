#include "TidemarKit/Inventory.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "TidemarCore/SaturatingArithmetic.h"
#include "TidemarKit/TemporaryTag.h"

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

/// Makes items of a reading, in which each top-level entry is followed by all that lies in it.
class ItemsOfReading final : public TreeVisitor {
 public:
  explicit ItemsOfReading(const FileURL& folder) : _folder(folder), _urls(folder) {}

  /// The items of all that was read, to be taken once.
  std::vector<Item> take() {
    finish();
    _items.shrink_to_fit();
    return std::move(_items);
  }

  void visit(const TreeElement& element) override {
    if (element.depth == 0) {
      finish();
      _name = element.name;
      _values = element.values;
    } else {
      add(element);
    }
  }

  // Which part it was doesn't matter: any unread part may hold the freshest file.
  void failed(int) override { _isComplete = false; }

  void knownFolder(std::span<const std::string> tags) override {
    if (TemporaryTag::holdsName(tags)) _holdsTemporaryFolder = true;
  }

  void restart() override { *this = ItemsOfReading(_folder); }

 private:
  /// Folds an entry of an item's tree into the tree's storage and latest date.
  void add(const TreeElement& element) {
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

  void finish() {
    if (!_name.empty() && !isHidden(_values, _name)) {
      _items.push_back({_urls.make(_name), freshness(), addingSaturated(ownSize(_values), _size)});
    }
    _name.clear();
    _latest.reset();
    _size = 0;
    _isComplete = true;
    _holdsTemporaryFolder = false;
    _skippedDepth.reset();
  }

  std::optional<Date> freshness() const {
    if (_holdsTemporaryFolder) return std::nullopt;
    // Of a package its own dates alone count, whatever lies in it.
    if (!isPlainDirectory(_values)) return dateOfFile(_values);
    return _isComplete ? laterDate(dateOfPlainDirectory(_values), _latest) : std::nullopt;
  }

  FileURL _folder;
  EntryURLs _urls;
  std::vector<Item> _items;

  // The top-level entry that is being read.
  std::string _name;
  ResourceValues _values;
  std::optional<Date> _latest;  ///< Among the entries of its tree that count for dates.
  std::int64_t _size = 0;       ///< Bytes of all entries of its tree that could be read.
  bool _isComplete = true;
  bool _holdsTemporaryFolder = false;

  /// Depth of the hidden directory or package whose contents don't count for dates. All that lies
  /// in it follows it directly, so what is deeper lies inside it.
  std::optional<std::size_t> _skippedDepth;
};

}  // namespace

std::vector<Item> items(OpenFolder& folder) {
  ItemsOfReading items(folder.url());
  folder.read(items);
  return items.take();
}

Look item(OpenFolder& folder, std::string_view name, Disposal disposal) {
  ItemsOfReading reading(folder.url());
  Look look{.item = std::nullopt, .state = folder.look(name, disposal, reading)};
  std::vector<Item> items = reading.take();
  if (!items.empty()) look.item = std::move(items.front());
  return look;
}

}  // namespace tidemar::Inventory
