#include <charconv>
#include <fstream>

#include "Platform/Files/DiskFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

void check(bool succeeded, const std::string& what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

/// Takes a name, plain or in quotes, off the front of a line.
std::string takeName(std::string_view& line) {
  const bool isQuoted = line.starts_with('"');
  const char end = isQuoted ? '"' : ' ';
  std::string name;
  std::size_t i = isQuoted ? 1 : 0;
  for (; i < line.size() && line[i] != end; ++i) {
    if (!isQuoted || line[i] != '\\') {
      name += line[i];
    } else if (line[++i] == 'x') {
      unsigned value = 0;
      std::from_chars(line.data() + i + 1, line.data() + i + 3, value, 16);
      name += static_cast<char>(value);
      i += 2;
    } else {
      name += line[i] == 'n' ? '\n' : line[i];
    }
  }
  line.remove_prefix(std::min(isQuoted ? i + 1 : i, line.size()));
  return name;
}

void makeEntry(const FileURL& url, std::string_view rest) {
  if (rest.starts_with("-> ")) {
    check(symlink(std::string(rest.substr(3)).c_str(), url.path().c_str()) == 0,
          "symlink " + url.path());
  } else if (rest == "|") {
    check(mkfifo(url.path().c_str(), 0600) == 0, "mkfifo " + url.path());
  } else {
    std::size_t size = 0;
    std::from_chars(rest.data(), rest.data() + rest.size(), size);
    writeFile(url, std::string(size, 'x'));
  }
}

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

TemporaryDirectory::TemporaryDirectory(std::string_view parent) {
  std::string pattern =
      parent.empty() ? std::filesystem::temp_directory_path().string() : std::string(parent);
  pattern = std::filesystem::canonical(pattern).string() + "/tidemar-test-XXXXXX";
  check(mkdtemp(pattern.data()) != nullptr, "mkdtemp " + pattern);
  _url = FileURL(pattern);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(_url.path(), ignored);
}

std::string TemporaryDirectory::path(std::string_view relative) const {
  return relative.empty() ? _url.path() : _url.path() + "/" + std::string(relative);
}

void readDrawing(std::string_view drawing,
                 const std::function<void(std::size_t level, std::string_view entry)>& read) {
  std::istringstream lines{std::string(drawing)};
  std::size_t margin = std::string::npos;
  std::size_t deepest = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t indentation = line.find_first_not_of(' ');
    if (indentation == std::string::npos) continue;
    if (margin == std::string::npos) margin = indentation;
    const std::size_t level = (indentation - margin) / 2;
    if (indentation < margin || level > deepest) throw std::logic_error("bad indentation: " + line);
    deepest = level + 1;
    read(level, std::string_view(line).substr(indentation));
  }
}

void makeTree(const FileURL& root, std::string_view drawing) {
  std::vector<FileURL> parents = {root};
  readDrawing(drawing, [&](std::size_t level, std::string_view rest) {
    parents.resize(level + 1);
    std::string name = takeName(rest);
    const bool isDirectory = name.ends_with('/') || rest == "/";
    if (name.ends_with('/')) name.pop_back();
    if (rest.starts_with(' ')) rest.remove_prefix(rest.find_first_not_of(' '));
    const FileURL url = parents.back().appendingPathComponent(name);
    parents.push_back(url);
    if (isDirectory) {
      check(mkdir(url.path().c_str(), 0700) == 0, "mkdir " + url.path());
    } else {
      makeEntry(url, rest);
    }
  });
}

void setModificationTime(const FileURL& url, double secondsSince1970) {
  const double whole = std::floor(secondsSince1970);
  timespec time{static_cast<time_t>(whole), static_cast<long>((secondsSince1970 - whole) * 1e9)};
  const timespec times[2] = {time, time};
  check(utimensat(AT_FDCWD, url.path().c_str(), times, AT_SYMLINK_NOFOLLOW) == 0,
        "utimensat " + url.path());
}

void writeFile(const FileURL& url, std::string_view content) {
  std::ofstream file(url.path(), std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  check(!file.fail(), "write " + url.path());
}

std::string readFile(const FileURL& url) {
  std::ifstream file(url.path(), std::ios::binary);
  check(file.is_open(), "read " + url.path());
  return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const FileURL& url) {
  struct stat values {};
  return lstat(url.path().c_str(), &values) == 0;
}

std::set<std::string> namesIn(const FileURL& directory) {
  std::set<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path(), error)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

int codeOf(const std::function<void()>& call) {
  try {
    call();
    return 0;
  } catch (const PlatformError& error) {
    EXPECT_TRUE(std::string(error.what()).starts_with("Couldn't ")) << error.what();
    return error.code();
  }
}

std::string pathIn(const FileURL& record) {
  const std::string text = readFile(record);
  const std::size_t start = text.find("\nPath=") + 6;
  return text.substr(start, text.find('\n', start) - start);
}

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
