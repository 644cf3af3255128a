#include "support/FakeFileManager.h"

#include "support/Testing.h"

namespace tidemar::testing {

/// What lies at a path. A disk is a list of these, in which each directory comes before what lies
/// in it, and what was made or renamed last comes last.
struct FakeFileManager::Entry {
  std::string_view name() const { return std::string_view(path).substr(path.rfind('/') + 1); }
  bool isDirectory() const { return values.isDirectory.value_or(false); }

  std::string path;
  std::uint64_t identity = 0;
  ResourceValues values;
  std::vector<std::string> tags;
  std::string linkTarget;
  bool isReadable = true;
};

namespace {

using Entry = FakeFileManager::Entry;

bool isOrLiesIn(const Entry& entry, const std::string& path) {
  return entry.path == path || entry.path.starts_with(path + "/");
}

bool liesDirectlyIn(const Entry& entry, const std::string& path) {
  return FileURL(entry.path).deletingLastPathComponent().path() == path && entry.path != "/";
}

void applyWord(Entry& entry, const std::string& word) {
  const auto date = [&](std::size_t prefix) { return Date{std::stod(word.substr(prefix))}; };
  ResourceValues& values = entry.values;
  if (word == "unreadable") {
    entry.isReadable = false;
  } else if (word == "hidden") {
    values.isHidden = true;
  } else if (word == "package") {
    values.isPackage = true;
  } else if (word.starts_with('@')) {
    values.addedToDirectoryDate = values.contentModificationDate = date(1);
  } else if (word.starts_with("added=")) {
    values.addedToDirectoryDate = date(6);
  } else if (word.starts_with("changed=")) {
    values.contentModificationDate = date(8);
  } else {
    values.totalFileAllocatedSize = std::stoll(word);
  }
}

std::uint64_t identityIn(std::string_view bookmark) {
  return std::strtoull(std::string(bookmark).c_str(), nullptr, 10);
}

}  // namespace

FakeFileManager::FakeFileManager() {
  _entries.emplace_back().path = "/";
  _entries.back().values.isDirectory = true;
}

FakeFileManager::~FakeFileManager() = default;

void FakeFileManager::draw(std::string_view drawing) {
  std::vector<std::string> parents;
  readDrawing(drawing, [&](std::size_t level, std::string_view line) {
    std::istringstream words{std::string(line)};
    std::string name;
    words >> name;
    const bool isDirectory = name.ends_with('/');
    if (isDirectory) name.pop_back();
    parents.resize(level);
    parents.push_back(level == 0 ? name : parents.back() + "/" + name);
    Entry& entry = make(parents.back());
    entry.values.isDirectory = isDirectory;
    for (std::string word; words >> word;) {
      if (word == "->") {
        words >> entry.linkTarget;
      } else {
        applyWord(entry, word);
      }
    }
  });
}

bool FakeFileManager::exists(const std::string& path) const {
  return find(path) != nullptr;
}

std::string FakeFileManager::names(const std::string& path) const {
  std::string result;
  for (const Entry& entry : _entries) {
    if (liesDirectlyIn(entry, path))
      result += (result.empty() ? "" : " ") + std::string(entry.name());
  }
  return result;
}

ResourceValues& FakeFileManager::values(const std::string& path) {
  return existing("change", FileURL(path)).values;
}

std::vector<std::string>& FakeFileManager::tags(const std::string& path) {
  return existing("change", FileURL(path)).tags;
}

void FakeFileManager::rename(const std::string& from, const std::string& to) const {
  existing("move", FileURL(from));
  make(FileURL(to).deletingLastPathComponent().path()).values.isDirectory = true;
  std::list<Entry> moved;
  for (auto next = _entries.begin(); next != _entries.end();) {
    const auto entry = next++;
    if (!isOrLiesIn(*entry, from)) continue;
    entry->path.replace(0, from.size(), to);
    moved.splice(moved.end(), _entries, entry);
  }
  _entries.splice(_entries.end(), moved);
}

void FakeFileManager::erase(const std::string& path) const {
  existing("erase", FileURL(path));
  _entries.remove_if([&](const Entry& entry) { return isOrLiesIn(entry, path); });
}

std::vector<std::string> FakeFileManager::changes() const {
  std::vector<std::string> result = _operations;
  std::erase_if(result, [](const std::string& line) {
    const std::string word = line.substr(0, line.find(' '));
    return word != "remove" && word != "trash" && word != "move" && word != "setTags";
  });
  return result;
}

void FakeFileManager::fail(const std::string& line, int code) {
  _failures[line] = code;
}

void FakeFileManager::before(const std::string& line, std::function<void()> action) {
  _hooks.emplace(line, std::move(action));
}

class FakeFileManager::Binned final : public BinnedItem {
 public:
  Binned(const FakeFileManager& disk, FileURL from, FileURL to)
      : _disk(disk), _from(std::move(from)), _to(std::move(to)) {}

  void putBack() override {
    _disk.begin("move " + _from.path() + " to " + _to.path(), _from);
    if (_disk.exists(_to.path())) throw PlatformError("move", _to, EEXIST);
    _disk.rename(_from.path(), _to.path());
  }

 private:
  const FakeFileManager& _disk;
  FileURL _from;
  FileURL _to;
};

/// Follows its directory wherever that is renamed to, as an open one does.
class FakeFileManager::Folder final : public OpenFolder {
 public:
  Folder(const FakeFileManager& disk, const Entry& entry)
      : _disk(disk), _identity(entry.identity), _url(entry.path) {}

  const FileURL& url() const override { return _url; }

  std::string bookmarkData() const override {
    begin("bookmark");
    // The second number makes each bookmark differ from the ones before it.
    return std::to_string(_identity) + "#" + std::to_string(++_disk._lastNumber) + path();
  }

  bool isRememberedBy(std::string_view bookmark) const override {
    return identityIn(bookmark) == _identity;
  }

  bool isOneOf(std::span<const FileURL> places) const override {
    return std::ranges::any_of(places, [&](const FileURL& place) {
      const Entry* entry = _disk.find(_disk.followed(place));
      return entry != nullptr && entry->identity == _identity;
    });
  }

  VolumeCapacity volumeCapacity() const override {
    begin("capacity");
    return _disk.capacity;
  }

  std::vector<std::string> tagNames() const override {
    begin("tags");
    return _disk.existing("read the tags of", FileURL(path())).tags;
  }

  void setTagNames(std::span<const std::string> tags) override {
    begin("setTags");
    _disk.existing("tag", FileURL(path())).tags.assign(tags.begin(), tags.end());
  }

  void setKnownFolders(std::shared_ptr<const KnownFolders> known) override {
    _known = std::move(known);
  }

  void giveBackTaken() override { begin("giveBack"); }

  void read(TreeVisitor& visitor) override {
    begin("list");
    const std::string path = this->path();
    if (!_disk.existing("list", _url).isReadable) throw PlatformError("list", _url, EACCES);
    for (const Entry& entry : _disk._entries) {
      if (liesDirectlyIn(entry, path)) readItem(entry, visitor);
    }
  }

  ItemState look(std::string_view name, Disposal, TreeVisitor& visitor) override {
    const FileURL url = begin("values", name);
    readItem(_disk.existing("read", url), visitor);
    ItemState state;
    state.name = name;
    state.tree.fingerprint = fingerprint(url.path());
    return state;
  }

  bool hasEntry(std::string_view name) const override {
    return _disk.exists(begin("exists", name).path());
  }

  std::optional<FileURL> trashItem(const ItemState& item) override {
    const std::string path = take("trash", item);
    const std::string first = std::string(binPath) + "/" + item.name;
    std::string place = first;
    for (int number = 2; _disk.exists(place); ++number)
      place = first + "." + std::to_string(number);
    _disk.rename(path, place);
    return _disk.binTellsPlace ? std::optional(FileURL(place)) : std::nullopt;
  }

  void removeItem(const ItemState& item) override { _disk.erase(take("remove", item)); }

  std::unique_ptr<BinnedItem> binnedItem(const FileURL& place, std::string_view name) override {
    _disk.begin("binned " + place.path(), place);
    if (!_disk.exists(place.path()) || !_disk.binKnowsItsItems) return nullptr;
    return std::make_unique<Binned>(_disk, place, FileURL(path()).appendingPathComponent(name));
  }

 private:
  std::string path() const {
    const Entry* entry = _disk.withIdentity(_identity);
    return entry == nullptr ? _url.path() : entry->path;
  }

  void begin(const std::string& word) const { _disk.begin(word + " " + path(), _url); }

  FileURL begin(const std::string& word, std::string_view name) const {
    const FileURL url = FileURL(path()).appendingPathComponent(name);
    _disk.begin(word + " " + url.path(), url);
    return url;
  }

  void readItem(const Entry& item, TreeVisitor& visitor) const {
    if (!item.isReadable && !item.isDirectory())
      throw PlatformError("read", FileURL(item.path), EACCES);
    visit(item, 0, visitor);
  }

  void visit(const Entry& entry, std::size_t depth, TreeVisitor& visitor) const {
    if (!entry.isReadable && !entry.isDirectory()) return visitor.failed(EACCES);
    visitor.visit({entry.name(), depth, entry.values});
    if (!entry.isDirectory()) return;
    const auto isThis = [&](const KnownFolder& other) {
      return identityIn(other.bookmark) == entry.identity || other.path == entry.path;
    };
    if (std::ranges::any_of(_known->all(), isThis)) visitor.knownFolder(entry.tags);
    if (!entry.isReadable) return visitor.failed(EACCES);
    for (const Entry& child : _disk._entries) {
      if (liesDirectlyIn(child, entry.path)) visit(child, depth + 1, visitor);
    }
  }

  /// All that can be seen of an item, to tell whether it changed.
  std::size_t fingerprint(const std::string& path) const {
    std::ostringstream text;
    for (const Entry& entry : _disk._entries) {
      if (!isOrLiesIn(entry, path)) continue;
      text << entry.path << entry.identity;
      for (const auto& date :
           {entry.values.addedToDirectoryDate, entry.values.contentModificationDate})
        text << '#' << date.value_or(Date{-1}).secondsSince1970;
    }
    return std::hash<std::string>()(text.str());
  }

  /// The path of an item that may go: it is what was looked at.
  std::string take(const std::string& word, const ItemState& item) const {
    const FileURL url = begin(word, item.name);
    _disk.existing(word, url);
    if (fingerprint(url.path()) != item.tree.fingerprint) throw ItemChanged(word, url, ESTALE);
    return url.path();
  }

  const FakeFileManager& _disk;
  std::uint64_t _identity;
  FileURL _url;
  std::shared_ptr<const KnownFolders> _known = std::make_shared<KnownFolders>();
};

std::string FakeFileManager::canonicalPath(const FileURL& url) const {
  begin("canonical " + url.path(), url);
  return existing("find", FileURL(followed(url))).path;
}

std::unique_ptr<OpenFolder> FakeFileManager::openFolder(const FileURL& url) const {
  return std::make_unique<Folder>(*this, existing("open", FileURL(followed(url))));
}

OpenedBookmark FakeFileManager::openBookmark(std::string_view bookmark) const {
  begin("resolve");
  const Entry* entry = withIdentity(identityIn(bookmark));
  if (entry != nullptr && !entry->path.starts_with(binPath))
    return {std::make_unique<Folder>(*this, *entry), bookmarksAreStale, false};
  const Entry* other = find(std::string(bookmark.substr(bookmark.find('/'))));
  if (entry != nullptr || other == nullptr) throw PlatformError("find", FileURL(), ENOENT);
  return {std::make_unique<Folder>(*this, *other), true, true};
}

void FakeFileManager::begin(const std::string& line, const FileURL& url) const {
  _operations.push_back(line);
  if (auto hook = _hooks.extract(line)) hook.mapped()();
  if (const auto failure = _failures.find(line); failure != _failures.end())
    throw PlatformError(line.substr(0, line.find(' ')), url, failure->second);
}

FakeFileManager::Entry* FakeFileManager::find(const std::string& path) const {
  const auto found = std::ranges::find(_entries, path, &Entry::path);
  return found == _entries.end() ? nullptr : &*found;
}

FakeFileManager::Entry& FakeFileManager::existing(const std::string& operation,
                                                  const FileURL& url) const {
  Entry* entry = find(url.path());
  if (entry == nullptr) throw PlatformError(operation, url, ENOENT);
  return *entry;
}

FakeFileManager::Entry* FakeFileManager::withIdentity(std::uint64_t identity) const {
  const auto found = std::ranges::find(_entries, identity, &Entry::identity);
  return found == _entries.end() ? nullptr : &*found;
}

std::string FakeFileManager::followed(const FileURL& url) const {
  const Entry* entry = find(url.path());
  return entry == nullptr || entry->linkTarget.empty() ? url.path() : entry->linkTarget;
}

FakeFileManager::Entry& FakeFileManager::make(const std::string& path) const {
  if (Entry* entry = find(path)) return *entry;
  make(FileURL(path).deletingLastPathComponent().path()).values.isDirectory = true;
  Entry& made = _entries.emplace_back();
  made.path = path;
  made.identity = ++_lastNumber;
  return made;
}

}  // namespace tidemar::testing
