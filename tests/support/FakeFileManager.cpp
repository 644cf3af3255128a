#include "support/FakeFileManager.h"

#include "support/Testing.h"

namespace tidemar::testing {

struct FakeFileManager::Node {
  std::string name;
  std::uint64_t identity = 0;
  Node* parent = nullptr;
  ResourceValues values;
  std::vector<std::string> tags;
  std::optional<std::string> linkTarget;
  bool isReadable = true;
  std::vector<std::unique_ptr<Node>> children;

  bool isDirectory() const { return values.isDirectory.value_or(false); }

  Node* child(std::string_view childName) const {
    const auto found =
        std::ranges::find(children, childName, [](const auto& c) { return c->name; });
    return found == children.end() ? nullptr : found->get();
  }

  std::string path() const {
    if (parent == nullptr) return "/";
    const std::string above = parent->path();
    return (above == "/" ? above : above + "/") + name;
  }
};

namespace {

using Node = FakeFileManager::Node;

std::vector<std::string> components(const std::string& path) {
  std::vector<std::string> result;
  std::istringstream stream(path);
  for (std::string component; std::getline(stream, component, '/');) {
    if (!component.empty()) result.push_back(component);
  }
  return result;
}

/// The path without links, as far as it can be followed; a link in the last component only where
/// `followsLast`.
std::string followed(const Node& root, const std::string& path, bool followsLast, int links = 0) {
  if (links > 40) throw std::logic_error("too many links: " + path);
  const Node* node = &root;
  std::string result;
  const std::vector<std::string> names = components(path);
  for (std::size_t i = 0; i < names.size(); ++i) {
    node = node == nullptr ? nullptr : node->child(names[i]);
    if (node != nullptr && node->linkTarget && (followsLast || i + 1 < names.size())) {
      const bool isAbsolute = node->linkTarget->starts_with('/');
      std::string rest = (isAbsolute ? "" : result + "/") + *node->linkTarget;
      while (++i < names.size())
        rest += "/" + names[i];
      return followed(root, rest, followsLast, links + 1);
    }
    result += "/" + names[i];
  }
  return result.empty() ? "/" : result;
}

void applyWord(Node& node, const std::string& word) {
  const auto date = [&](std::size_t prefix) { return Date{std::stod(word.substr(prefix))}; };
  if (word == "hidden") {
    node.values.isHidden = true;
  } else if (word == "package") {
    node.values.isPackage = true;
  } else if (word == "unreadable") {
    node.isReadable = false;
  } else if (word.starts_with('@')) {
    node.values.addedToDirectoryDate = node.values.contentModificationDate = date(1);
  } else if (word.starts_with("added=")) {
    node.values.addedToDirectoryDate = date(6);
  } else if (word.starts_with("changed=")) {
    node.values.contentModificationDate = date(8);
  } else {
    node.values.totalFileAllocatedSize = std::stoll(word);
  }
}

/// All that can be seen of a tree, to tell whether it changed.
std::string describe(const Node& node) {
  const auto seconds = [](std::optional<Date> date) {
    return date ? std::to_string(date->secondsSince1970) : "-";
  };
  std::string text = node.name + "#" + std::to_string(node.identity) +
                     seconds(node.values.addedToDirectoryDate) +
                     seconds(node.values.contentModificationDate) + "{";
  for (const auto& child : node.children)
    text += describe(*child);
  return text + "}";
}

Node* withIdentity(Node& node, std::uint64_t identity) {
  if (node.identity == identity) return &node;
  for (const auto& child : node.children) {
    if (Node* found = withIdentity(*child, identity)) return found;
  }
  return nullptr;
}

std::uint64_t identityIn(std::string_view bookmark) {
  return std::strtoull(std::string(bookmark).c_str(), nullptr, 10);
}

}  // namespace

FakeFileManager::FakeFileManager() : _root(std::make_unique<Node>()) {
  _root->values.isDirectory = true;
}

FakeFileManager::~FakeFileManager() = default;

void FakeFileManager::draw(std::string_view drawing) {
  std::vector<std::string> parents;
  readDrawing(drawing, [&](std::size_t level, std::string_view entry) {
    parents.resize(level);
    std::istringstream words{std::string(entry)};
    auto node = std::make_unique<Node>();
    std::string name;
    words >> name;
    node->values.isDirectory = name.ends_with('/');
    if (name.ends_with('/')) name.pop_back();
    for (std::string word; words >> word;) {
      if (word == "->") {
        words >> node->linkTarget.emplace();
      } else {
        applyWord(*node, word);
      }
    }
    parents.push_back(level == 0 ? name : parents.back() + "/" + name);
    place(std::move(node), parents.back());
  });
}

bool FakeFileManager::exists(const std::string& path) const {
  return find(path) != nullptr;
}

std::string FakeFileManager::names(const std::string& path) const {
  std::string result;
  for (const auto& child : existing("list", FileURL(path)).children)
    result += (result.empty() ? "" : " ") + child->name;
  return result;
}

ResourceValues& FakeFileManager::values(const std::string& path) {
  return existing("change", FileURL(path)).values;
}

std::vector<std::string>& FakeFileManager::tags(const std::string& path) {
  return existing("change", FileURL(path)).tags;
}

void FakeFileManager::rename(const std::string& from, const std::string& to) {
  place(take(existing("rename", FileURL(from))), to);
}

void FakeFileManager::erase(const std::string& path) {
  take(existing("erase", FileURL(path)));
}

std::vector<std::string> FakeFileManager::changes() const {
  std::vector<std::string> result;
  std::ranges::copy_if(_operations, std::back_inserter(result), [](const std::string& line) {
    return std::ranges::any_of(
        std::initializer_list<std::string_view>{"remove ", "trash ", "move ", "setTags "},
        [&](std::string_view word) { return line.starts_with(word); });
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
    Node& node = _disk.existing("move", _from);
    if (_disk.exists(_to.path())) throw PlatformError("move", _to, EEXIST);
    _disk.place(_disk.take(node), _to.path());
  }

 private:
  const FakeFileManager& _disk;
  FileURL _from;
  FileURL _to;
};

/// Follows its node wherever that is renamed to, as an open directory does.
class FakeFileManager::Folder final : public OpenFolder {
 public:
  Folder(const FakeFileManager& disk, const Node& node)
      : _disk(disk), _identity(node.identity), _url(node.path()) {}

  const FileURL& url() const override { return _url; }

  std::string bookmarkData() const override {
    _disk.begin("bookmark " + path(), _url);
    // The second number makes each bookmark differ from the ones before it.
    return std::to_string(_identity) + "#" + std::to_string(++_disk._lastNumber) + path();
  }

  bool isRememberedBy(std::string_view bookmark) const override {
    return identityIn(bookmark) == _identity;
  }

  bool isOneOf(std::span<const FileURL> places) const override {
    return std::ranges::any_of(places, [&](const FileURL& place) {
      const Node* node = _disk.find(followed(*_disk._root, place.path(), true));
      return node != nullptr && node->identity == _identity;
    });
  }

  VolumeCapacity volumeCapacity() const override {
    _disk.begin("capacity " + path(), _url);
    return _disk.capacity;
  }

  std::vector<std::string> tagNames() const override {
    _disk.begin("tags " + path(), _url);
    return node("read the tags of").tags;
  }

  void setTagNames(std::span<const std::string> tags) override {
    _disk.begin("setTags " + path(), _url);
    node("tag").tags.assign(tags.begin(), tags.end());
  }

  void setKnownFolders(std::shared_ptr<const KnownFolders> known) override {
    _known = std::move(known);
  }

  void giveBackTaken() override { _disk.begin("giveBack " + path(), _url); }

  void read(TreeVisitor& visitor) override {
    _disk.begin("list " + path(), _url);
    const Node& folder = node("list");
    if (!folder.isReadable) throw PlatformError("list", _url, EACCES);
    for (const auto& child : folder.children)
      readEntry(*child, visitor);
  }

  ItemState look(std::string_view name, Disposal, TreeVisitor& visitor) override {
    const FileURL url = urlOf(name);
    _disk.begin("values " + url.path(), url);
    const Node& item = _disk.existing("read", url);
    readEntry(item, visitor);
    ItemState state;
    state.name = name;
    state.tree.fingerprint = std::hash<std::string>()(describe(item));
    return state;
  }

  bool hasEntry(std::string_view name) const override {
    const FileURL url = urlOf(name);
    _disk.begin("exists " + url.path(), url);
    return _disk.exists(url.path());
  }

  std::optional<FileURL> trashItem(const ItemState& item) override {
    std::unique_ptr<Node> taken = take("trash", item);
    const std::string first = std::string(binPath) + "/" + taken->name;
    std::string place = first;
    for (int number = 2; _disk.exists(place); ++number)
      place = first + "." + std::to_string(number);
    _disk.place(std::move(taken), place);
    return _disk.binTellsPlace ? std::optional(FileURL(place)) : std::nullopt;
  }

  void removeItem(const ItemState& item) override { take("remove", item); }

  std::unique_ptr<BinnedItem> binnedItem(const FileURL& place, std::string_view name) override {
    _disk.begin("binned " + place.path(), place);
    if (!_disk.exists(place.path()) || !_disk.binKnowsItsItems) return nullptr;
    return std::make_unique<Binned>(_disk, place, urlOf(name));
  }

 private:
  Node& node(const std::string& operation) const {
    Node* found = withIdentity(*_disk._root, _identity);
    if (found == nullptr) throw PlatformError(operation, _url, ENOENT);
    return *found;
  }
  std::string path() const {
    const Node* found = withIdentity(*_disk._root, _identity);
    return found == nullptr ? _url.path() : found->path();
  }
  FileURL urlOf(std::string_view name) const {
    return FileURL(path()).appendingPathComponent(name);
  }

  void readEntry(const Node& entry, TreeVisitor& visitor) const {
    if (!entry.isReadable && !entry.isDirectory())
      throw PlatformError("read", FileURL(entry.path()), EACCES);
    visit(entry, 0, visitor);
  }

  void visit(const Node& entry, std::size_t depth, TreeVisitor& visitor) const {
    if (!entry.isReadable && !entry.isDirectory()) return visitor.failed(EACCES);
    visitor.visit({entry.name, depth, entry.values});
    if (!entry.isDirectory()) return;
    const auto isThis = [&](const KnownFolder& other) {
      return identityIn(other.bookmark) == entry.identity || other.path == entry.path();
    };
    if (std::ranges::any_of(_known->all(), isThis)) visitor.knownFolder(entry.tags);
    if (depth == 0) {
      try {
        _disk.begin("walk " + entry.path());
      } catch (const PlatformError& error) {
        return visitor.failed(error.code());
      }
    }
    if (!entry.isReadable) return visitor.failed(EACCES);
    for (const auto& child : entry.children)
      visit(*child, depth + 1, visitor);
  }

  std::unique_ptr<Node> take(const std::string& word, const ItemState& item) const {
    const FileURL url = urlOf(item.name);
    _disk.begin(word + " " + url.path(), url);
    Node& present = _disk.existing(word, url);
    if (std::hash<std::string>()(describe(present)) != item.tree.fingerprint)
      throw ItemChanged(word, url, ESTALE);
    return _disk.take(present);
  }

  const FakeFileManager& _disk;
  std::uint64_t _identity;
  FileURL _url;
  std::shared_ptr<const KnownFolders> _known = std::make_shared<KnownFolders>();
};

std::string FakeFileManager::canonicalPath(const FileURL& url) const {
  begin("canonical " + url.path(), url);
  std::string path = followed(*_root, url.path(), true);
  existing("find", FileURL(path));
  return path;
}

std::unique_ptr<OpenFolder> FakeFileManager::openFolder(const FileURL& url) const {
  return std::make_unique<Folder>(*this,
                                  existing("open", FileURL(followed(*_root, url.path(), true))));
}

OpenedBookmark FakeFileManager::openBookmark(std::string_view bookmark) const {
  begin("resolve");
  const Node* node = withIdentity(*_root, identityIn(bookmark));
  const std::string path(bookmark.substr(bookmark.find('/')));
  if (node == nullptr && exists(path))
    return {std::make_unique<Folder>(*this, existing("find", FileURL(path))), true, true};
  if (node == nullptr || node->path().starts_with(binPath))
    throw PlatformError("find", FileURL(), ENOENT);
  return {std::make_unique<Folder>(*this, *node), bookmarksAreStale, false};
}

VolumeCapacity FakeFileManager::volumeCapacity(const FileURL& url) const {
  begin("capacity " + url.path(), url);
  return capacity;
}

std::vector<FileURL> FakeFileManager::mountedVolumeURLs() const {
  begin("volumes");
  return volumes;
}

FileURL FakeFileManager::homeDirectoryForCurrentUser() const {
  begin("home");
  return home;
}

std::vector<FileURL> FakeFileManager::systemDirectoryURLs() const {
  begin("systemDirectories");
  return systemDirectories;
}

Date FakeFileManager::bootTime() const {
  begin("bootTime");
  return boot;
}

void FakeFileManager::begin(const std::string& line, const FileURL& url) const {
  _operations.push_back(line);
  if (const auto [hook, end] = _hooks.equal_range(line); hook != end) {
    const std::function<void()> action = std::move(hook->second);
    _hooks.erase(hook);
    action();
  }
  if (const auto failure = _failures.find(line); failure != _failures.end())
    throw PlatformError(line.substr(0, line.find(' ')), url, failure->second);
}

FakeFileManager::Node* FakeFileManager::find(const std::string& path) const {
  if (path.empty()) return nullptr;
  Node* node = _root.get();
  for (const std::string& component : components(followed(*_root, path, false))) {
    node = node->child(component);
    if (node == nullptr) return nullptr;
  }
  return node;
}

FakeFileManager::Node& FakeFileManager::existing(const std::string& operation,
                                                 const FileURL& url) const {
  Node* node = find(url.path());
  if (node == nullptr) throw PlatformError(operation, url, ENOENT);
  return *node;
}

/// The directory at this path, made with its parents where it is missing.
FakeFileManager::Node& FakeFileManager::directory(const std::string& path) const {
  Node* node = _root.get();
  for (const std::string& component : components(path)) {
    Node* child = node->child(component);
    if (child == nullptr) {
      auto made = std::make_unique<Node>();
      child = made.get();
      child->name = component;
      child->values.isDirectory = true;
      child->parent = node;
      child->identity = ++_lastNumber;
      node->children.push_back(std::move(made));
    }
    node = child;
  }
  return *node;
}

std::unique_ptr<FakeFileManager::Node> FakeFileManager::take(Node& node) const {
  auto& siblings = node.parent->children;
  const auto found = std::ranges::find(siblings, &node, [](const auto& c) { return c.get(); });
  std::unique_ptr<Node> taken = std::move(*found);
  siblings.erase(found);
  taken->parent = nullptr;
  return taken;
}

void FakeFileManager::place(std::unique_ptr<Node> node, const std::string& path) const {
  const FileURL url(path);
  Node& parent = directory(url.deletingLastPathComponent().path());
  if (parent.child(url.lastPathComponent()) != nullptr)
    throw std::logic_error("already there: " + path);
  node->name = url.lastPathComponent();
  node->parent = &parent;
  if (node->identity == 0) node->identity = ++_lastNumber;
  parent.children.push_back(std::move(node));
}

}  // namespace tidemar::testing
