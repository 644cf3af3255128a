#include "support/FakeFileManager.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <utility>

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
std::string followed(const Node& root, const std::string& path, bool followsLast) {
  std::vector<std::string> pending = components(path);
  const Node* node = &root;
  std::string result;
  for (std::size_t i = 0, links = 0; i < pending.size(); ++i) {
    const bool isLast = i + 1 == pending.size();
    const Node* child = node == nullptr ? nullptr : node->child(pending[i]);
    if (child != nullptr && child->linkTarget && (!isLast || followsLast)) {
      if (++links > 40) throw std::logic_error("too many links: " + path);
      std::vector<std::string> target = components(*child->linkTarget);
      if (!child->linkTarget->starts_with('/')) {
        const std::vector<std::string> above = components(result);
        target.insert(target.begin(), above.begin(), above.end());
      }
      target.insert(target.end(), pending.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                    pending.end());
      pending = std::move(target);
      node = &root;
      result.clear();
      i = static_cast<std::size_t>(-1);
      continue;
    }
    result += "/" + pending[i];
    node = child;
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

void walk(const Node& directory, std::size_t depth, TreeVisitor& visitor) {
  if (!directory.isReadable) {
    visitor.failed(PlatformError("read", FileURL(directory.path()), EACCES));
    return;
  }
  for (const auto& child : directory.children) {
    if (!child->isReadable && !child->isDirectory()) {
      visitor.failed(PlatformError("read", FileURL(child->path()), EACCES));
      continue;
    }
    visitor.visit({child->name, depth, child->values});
    if (child->isDirectory()) walk(*child, depth + 1, visitor);
  }
}

const Node* withIdentity(const Node& node, std::uint64_t identity) {
  if (node.identity == identity) return &node;
  for (const auto& child : node.children) {
    if (const Node* found = withIdentity(*child, identity)) return found;
  }
  return nullptr;
}

}  // namespace

FakeFileManager::FakeFileManager() : _root(std::make_unique<Node>()) {
  _root->values.isDirectory = true;
}

FakeFileManager::~FakeFileManager() = default;

void FakeFileManager::draw(std::string_view drawing) {
  std::vector<std::string> parents;
  std::istringstream lines{std::string(drawing)};
  std::size_t margin = std::string::npos;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t indentation = line.find_first_not_of(' ');
    if (indentation == std::string::npos) continue;
    if (margin == std::string::npos) margin = indentation;
    const std::size_t level = (indentation - margin) / 2;
    if (indentation < margin || level > parents.size())
      throw std::logic_error("bad indentation: " + line);
    parents.resize(level);

    std::istringstream words(line);
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
    const std::string path = level == 0 ? name : parents.back() + "/" + name;
    parents.push_back(path);
    place(std::move(node), path);
  }
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

std::vector<DirectoryEntry> FakeFileManager::contentsOfDirectory(const FileURL& directory) const {
  begin("list " + directory.path(), directory);
  const Node& node = existing("list", directory);
  if (!node.isDirectory()) throw PlatformError("list", directory, ENOTDIR);
  if (!node.isReadable) throw PlatformError("list", directory, EACCES);
  std::vector<DirectoryEntry> entries;
  for (const auto& child : node.children) {
    const FileURL url = directory.appendingPathComponent(child->name);
    if (!child->isReadable && !child->isDirectory()) throw PlatformError("read", url, EACCES);
    entries.push_back({url, child->values});
  }
  return entries;
}

ResourceValues FakeFileManager::resourceValues(const FileURL& url) const {
  begin("values " + url.path(), url);
  const Node& node = existing("read", url);
  if (!node.isReadable && !node.isDirectory()) throw PlatformError("read", url, EACCES);
  return node.values;
}

void FakeFileManager::walkTree(const FileURL& directory, TreeVisitor& visitor) const {
  begin("walk " + directory.path(), directory);
  const Node* node = find(directory.path());
  if (node == nullptr || !node->isDirectory()) {
    visitor.failed(PlatformError("read", directory, node == nullptr ? ENOENT : ENOTDIR));
    return;
  }
  walk(*node, 1, visitor);
}

bool FakeFileManager::fileExists(const FileURL& url) const {
  begin("exists " + url.path(), url);
  return exists(url.path());
}

std::string FakeFileManager::canonicalPath(const FileURL& url) const {
  begin("canonical " + url.path(), url);
  std::string path = followed(*_root, url.path(), true);
  existing("find", FileURL(path));
  return path;
}

std::string FakeFileManager::resolvingSymlinksInPath(const FileURL& url) const {
  std::string path = followed(*_root, url.path(), true);
  return exists(path) ? path : url.path();
}

std::string FakeFileManager::bookmarkData(const FileURL& directory) const {
  begin("bookmark " + directory.path(), directory);
  const Node& node = existing("bookmark", directory);
  // The second number makes each bookmark differ from the ones before it.
  return std::to_string(node.identity) + "#" + std::to_string(++_lastNumber) + directory.path();
}

ResolvedBookmark FakeFileManager::resolveBookmark(std::string_view bookmark) const {
  begin("resolve");
  const std::uint64_t identity = std::strtoull(std::string(bookmark).c_str(), nullptr, 10);
  const Node* node = withIdentity(*_root, identity);
  const std::string_view path = bookmark.substr(bookmark.find('/'));
  if (node == nullptr && exists(std::string(path))) return {FileURL(std::string(path)), true, true};
  if (node == nullptr || node->path().starts_with(binPath))
    throw PlatformError("find", FileURL(), ENOENT);
  return {FileURL(node->path()), bookmarksAreStale, false};
}

std::vector<std::string> FakeFileManager::tagNames(const FileURL& url) const {
  begin("tags " + url.path(), url);
  return existing("read the tags of", url).tags;
}

void FakeFileManager::setTagNames(const FileURL& url, std::span<const std::string> tags) const {
  begin("setTags " + url.path(), url);
  existing("tag", url).tags.assign(tags.begin(), tags.end());
}

void FakeFileManager::removeItem(const FileURL& url) const {
  begin("remove " + url.path(), url);
  take(existing("delete", url));
}

std::optional<FileURL> FakeFileManager::trashItem(const FileURL& url) const {
  begin("trash " + url.path(), url);
  std::unique_ptr<Node> node = take(existing("trash", url));
  std::string path = std::string(binPath) + "/" + node->name;
  for (int number = 2; exists(path); ++number)
    path = std::string(binPath) + "/" + node->name + "." + std::to_string(number);
  place(std::move(node), path);
  return binTellsPlace ? std::optional(FileURL(path)) : std::nullopt;
}

void FakeFileManager::moveItem(const FileURL& from, const FileURL& to) const {
  begin("move " + from.path() + " to " + to.path(), from);
  Node& node = existing("move", from);
  if (exists(to.path())) throw PlatformError("move", to, EEXIST);
  place(take(node), to.path());
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
