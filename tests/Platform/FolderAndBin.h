#pragma once

#include "Platform/Files/DiskFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {

/// Writes down what a reading or a look tells of.
struct TreeRecorder : TreeVisitor {
  void visit(const TreeElement& element) override { names += std::string(element.name) + " "; }
  void failed(int code) override { failures.push_back(code); }
  void restart() override {}
  void knownFolder(std::span<const std::string>) override {}

  std::string names;
  std::vector<int> failures;
};

/// Runs a command line of the shell in a directory.
inline std::string runIn(const FileURL& directory, const std::string& command) {
  return runCommand("cd '" + directory.path() + "' && { " + command + "; }");
}

using Permissions = std::filesystem::perms;

inline Permissions permissionsOf(const FileURL& url) {
  return std::filesystem::symlink_status(url.path()).permissions();
}

inline std::string contentOf(const FileURL& url) {
  return exists(url) ? readFile(url) : "nothing";
}

/// A home with a folder and a Bin, in which items lie that went from the folder, or are said to.
class FolderAndBin : public ::testing::Test {
 protected:
  FolderAndBin() { makeTree(_home.url(), "folder/"); }

  FileURL home(const std::string& relative) const { return _home.url(relative); }
  FileURL bin(const std::string& relative) const { return home(".local/share/Trash/" + relative); }
  FileURL folder(const std::string& relative) const {
    return FileURL(_folder.path() + "/" + relative);
  }

  /// From here on the folder lies on another file system. False where there is none to test with.
  bool mountDrive(TestFileSystem::Type type, const std::string& options = {}) {
    _drive = std::make_unique<TestFileSystem>(type, options);
    if (!_drive->isMounted()) return false;
    makeTree(_drive->url(), "folder/");
    _folder = drive("folder");
    return true;
  }
  FileURL drive(const std::string& relative) const { return _drive->url(relative); }

  /// Lays a file into a Trash, which is made where it is missing, with a record of this path.
  static FileURL lay(const FileURL& trash, const std::string& name, const std::string& recorded) {
    std::filesystem::create_directories(trash.path() + "/files");
    std::filesystem::create_directories(trash.path() + "/info");
    writeFile(FileURL(trash.path() + "/info/" + name + ".trashinfo"),
              "[Trash Info]\nPath=" + recorded + "\nDeletionDate=2026-01-02T03:04:05\n");
    FileURL place(trash.path() + "/files/" + name);
    erase(place);
    writeFile(place, "content");
    return place;
  }

  /// Lays "item", as it is drawn, into the home's Bin.
  FileURL layItem(const std::string& drawing = "item 5") const {
    FileURL place = lay(bin(""), "item", folder("item").path());
    erase(place);
    makeTree(bin("files"), drawing);
    return place;
  }

  std::unique_ptr<OpenFolder> open() const { return DiskFileManager().openFolder(folder("")); }

  /// Whether the Bin has an item at this place that went from the folder under this name.
  bool knows(const FileURL& place, const std::string& name = "item") const {
    return open()->binnedItem(place, name) != nullptr;
  }

  /// The code of the error that a put-back ends in, 0 for none.
  int putBack(const FileURL& place, const std::string& name = "item") {
    try {
      const auto opened = open();
      const auto item = opened->binnedItem(place, name);
      EXPECT_NE(item, nullptr);
      if (item) item->putBack();
      return 0;
    } catch (const PlatformError& error) {
      _reason = error.reason();
      return error.code();
    }
  }

  /// All that is to be kept of an item, in a form that can be compared: contents, kinds, modes,
  /// owners, times, links, hard links and attributes.
  static std::string imageOf(const FileURL& item) {
    if (!exists(item)) return "nothing";
    const std::string folder = item.deletingLastPathComponent().path();
    const std::string name(item.lastPathComponent());
    return runCommand(
        "tar --create --format=posix --pax-option=exthdr.name=x,delete=atime,delete=ctime "
        "--sort=name --xattrs -C '" +
        folder + "' '" + name + "' | sha256sum");
  }

  static void erase(const FileURL& url) { std::filesystem::remove_all(url.path()); }
  static void move(const FileURL& from, const FileURL& to) {
    std::filesystem::rename(from.path(), to.path());
  }
  static void setMode(const FileURL& url, mode_t mode) {
    ASSERT_EQ(chmod(url.path().c_str(), mode), 0) << url.path();
  }

  const std::string user = std::to_string(geteuid());
  std::string _reason;  ///< Of the put-back that failed last.
  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
  FileURL _folder = _home.url("folder");
  std::unique_ptr<TestFileSystem> _drive;
};

}  // namespace tidemar::testing
