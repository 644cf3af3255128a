#include <sys/file.h>
#include <sys/mman.h>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/ReadLease.h"
#include "Platform/Files/DiskFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

constexpr const char* drawing = R"(
  folder/
    item/
      file 3
      .hidden 3
      Tool.AppDir/
        part 3
      sub/
        deep/
          leaf 3
    single 3
    .hidden)";

struct NoVisitor : TreeVisitor {
  void visit(const TreeElement&) override {}
  void failed(int) override {}
  void restart() override {}
  void knownFolder(std::span<const std::string>) override {}
};

/// A folder in a home of its own, looked at and then let go of, with something in between.
class Taking : public ::testing::TestWithParam<Disposal> {
 protected:
  Taking() {
    makeTree(_home.url(), drawing);
    _folder = DiskFileManager().openFolder(_home.url("folder"));
  }

  ItemState look(const char* name) {
    NoVisitor visitor;
    return _folder->look(name, GetParam(), visitor);
  }

  void take(const ItemState& item) {
    if (GetParam() == Disposal::bin) {
      _folder->trashItem(item);
    } else {
      _folder->removeItem(item);
    }
  }

  std::string path(const std::string& inFolder) const { return _home.path("folder/" + inFolder); }

  /// Whether nothing of the program's own is left in the folder, and nothing in the Bin.
  void expectNoTrace() {
    _folder.reset();
    for (const std::string& name : namesIn(_home.url("folder")))
      EXPECT_FALSE(name.starts_with(".tidemar")) << name;
    EXPECT_TRUE(namesIn(_home.url(".local/share/Trash/files")).empty());
    EXPECT_TRUE(namesIn(_home.url(".local/share/Trash/info")).empty());
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
  std::unique_ptr<OpenFolder> _folder;
};

INSTANTIATE_TEST_SUITE_P(Platform, Taking, ::testing::Values(Disposal::bin, Disposal::delete_),
                         [](const auto& disposal) {
                           return disposal.param == Disposal::bin ? "toTheBin" : "deleting";
                         });

TEST_P(Taking, asksForNoFileMoreOftenThanItsStepsNeed) {
  constexpr int count = 30;
  for (int i = 0; i < count; ++i)
    writeFile(FileURL(path(std::to_string(i))), "x");
  take(look("single"));
  // Until the clock of files moves on, a change of the file or of the new Bin could leave no trace.
  const Timestamp made = clockOfFiles();
  while (clockOfFiles() == made)
    std::this_thread::yield();
  int calls = 0;
  withActionBefore(
      SYS_statx, [&](int number) { calls = number; },
      [&] {
        for (int i = 0; i < count; ++i)
          take(look(std::to_string(i).c_str()));
      });
  // The list of hidden names, the look and the check; the Bin's place, or the file as it is
  // deleted. What lies in the Bin is looked for once.
  EXPECT_LE(calls, GetParam() == Disposal::bin ? 4 * count + 4 : 5 * count);
}

TEST_P(Taking, whatChangedAfterTheLookComesBack) {
  for (const auto& [name, change] : {
           std::pair{"item", "echo x >> item/sub/deep/leaf"},
           {"item", "touch -r item/file t && echo y > item/file && touch -r t item/file"},
           {"item", "echo x > item/.hidden"},
           {"item", "echo x > item/Tool.AppDir/part"},
           {"item", "touch item/sub/new"},
           {"item", "rm item/sub/deep/leaf"},
           {"item", "echo x > n && mv n item/file"},
           {"item", "mv item i && mkdir item"},
           {"item", "mv item i && ln -s i item"},
           {"item", "mv item/sub s && cp -a s item/sub"},
           {"item", "setfattr -n user.xdg.tags -v Tag item/sub || chmod 0711 item/sub"},
           {"single", "echo x > single"},
           {"single", "echo x > n && mv n single"},
           {"single", "cp -a single n && mv n single"},
       }) {
    SCOPED_TRACE(change);
    TemporaryDirectory place;
    const auto inFolder = [&](const std::string& command) {
      return runCommand("cd '" + place.path("folder") + "' && " + command);
    };
    makeTree(place.url(), drawing);
    _folder = DiskFileManager().openFolder(place.url("folder"));
    const ItemState item = look(name);
    ASSERT_FALSE(item.obstacle) << item.obstacle->what();
    EXPECT_GT(item.latestChange.seconds, 0) << "a look waits until the clock has passed it";
    inFolder(change);
    const std::string before = inFolder("find . | sort");
    EXPECT_THROW(take(item), ItemChanged);
    _folder.reset();
    EXPECT_EQ(inFolder("find . | sort"), before);
  }
  expectNoTrace();
}

TEST_P(Taking, whatStandsInTheWayIsSeenBeforeAnythingIsTouched) {
  const auto isInTheWay = [&] {
    const ItemState item = look("item");
    return item.obstacle && item.obstacle->code() == ETXTBSY;
  };
  for (const auto& [name, flags] :
       {std::pair{"item/sub/deep/leaf", O_WRONLY}, {"item/.hidden", O_RDWR | O_APPEND}}) {
    const FileDescriptor writer(open(path(name).c_str(), flags));
    EXPECT_EQ(isInTheWay(), GetParam() == Disposal::delete_) << name;
  }
  FileDescriptor file(open(path("item/file").c_str(), O_RDWR));
  void* mapping = mmap(nullptr, 3, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  ASSERT_NE(mapping, MAP_FAILED);
  file.close();
  EXPECT_EQ(isInTheWay(), GetParam() == Disposal::delete_) << "a mapping";
  munmap(mapping, 3);

  const FileDescriptor reader(open(path("item/file").c_str(), O_RDONLY));
  EXPECT_FALSE(isInTheWay()) << "who only reads is in nobody's way";
}

TEST_P(Taking, whoComesToWriteDuringALeaseIsTold) {
  std::jthread writer;
  ReadLease lease;
  ASSERT_EQ(lease.open(AT_FDCWD, path("item/file").c_str()), 0);
  EXPECT_EQ(lease.check(), 0);
  writer = std::jthread([&] { FileDescriptor(open(path("item/file").c_str(), O_WRONLY)); });
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (lease.check() == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  EXPECT_EQ(lease.check(), ETXTBSY);
}

TEST_P(Taking, aNameThatWasTakenMeanwhileIsNotReplaced) {
  EXPECT_EQ(nameBeside("name", 1), "name (2)");
  EXPECT_EQ(nameBeside("report.pdf", 2), "report (3).pdf");
  EXPECT_EQ(nameBeside(std::string(255, 'n'), 1).size(), 255U);

  makeTree(_home.url("folder"), "\"single (2)\" 1\nfrom/\n  single 2");
  const FileDescriptor from(open(path("from").c_str(), O_RDONLY));
  const FileDescriptor folder(open(path("").c_str(), O_RDONLY));
  EXPECT_EQ(giveBack(from.get(), "single", folder.get(), "single"), 0);
  EXPECT_EQ(readFile(FileURL(path("single"))), "xxx");
  EXPECT_EQ(readFile(FileURL(path("single (2)"))), "x");
  EXPECT_EQ(readFile(FileURL(path("single (3)"))), "xx");
}

TEST_P(Taking, goesWhereverTheFolderIsByThen) {
  const ItemState item = look("item");
  ASSERT_EQ(rename(path("").c_str(), _home.path("moved").c_str()), 0);
  makeTree(_home.url(), "folder/\n  item/\n    precious");
  take(item);
  EXPECT_FALSE(exists(_home.url("moved/item")));
  EXPECT_TRUE(exists(_home.url("folder/item/precious")));
  EXPECT_TRUE(namesIn(_home.url("moved")).contains("single"));
  if (GetParam() == Disposal::bin) {
    EXPECT_EQ(pathIn(_home.url(".local/share/Trash/info/item.trashinfo")),
              _home.path("moved/item"));
  }
}

TEST_P(Taking, nothingGoesFromAFolderThatLiesInTheBin) {
  makeTree(_home.url(), ".local/\n  share/\n    Trash/\n      files/\n      info/");
  const ItemState item = look("item");
  ASSERT_EQ(rename(path("").c_str(), _home.path(".local/share/Trash/files/folder").c_str()), 0);
  EXPECT_THROW(take(item), PlatformError);
  EXPECT_TRUE(exists(_home.url(".local/share/Trash/files/folder/item/sub/deep/leaf")));
}

class Deleting : public Taking {};
INSTANTIATE_TEST_SUITE_P(Platform, Deleting, ::testing::Values(Disposal::delete_),
                         [](const auto&) { return "deleting"; });

TEST_P(Deleting, takesHardLinksOfOneFile) {
  for (const char* name : {"a", "sub/b", "sub/deep/c"})
    ASSERT_EQ(link(path("item/file").c_str(), path(std::string("item/") + name).c_str()), 0);
  ASSERT_EQ(link(path("item/file").c_str(), path("kept").c_str()), 0);
  take(look("item"));
  EXPECT_FALSE(exists(_home.url("folder/item")));
  EXPECT_EQ(readFile(_home.url("folder/kept")), "xxx");
  expectNoTrace();
}

TEST_P(Deleting, emptiesNoOtherDirectoryThatCameInThePlaceOfOneThatWasClosedMeanwhile) {
  const std::string decoy = _home.path("decoy");
  makeTree(_home.url(), "decoy/\n  a/\n    precious\n  b/\n    precious");
  std::string below;
  for (int level = 0; level < 20; ++level)
    below += "/d";
  runCommand("cd '" + path("") + "' && mkdir -p deep/a" + below + " deep/b" + below);
  const ItemState deep = look("deep");
  const auto exchange = [&](int call) {
    for (const std::string& name : namesIn(_home.url("folder"))) {
      if (call == 1 && name.starts_with(".tidemar-taken-"))
        renameat2(-1, path(name + "/0/deep").c_str(), -1, decoy.c_str(), RENAME_EXCHANGE);
    }
  };
  withActionBefore(SYS_unlinkat, exchange, [&] { EXPECT_THROW(take(deep), ItemChanged); });
  EXPECT_EQ(runCommand("find '" + _home.path() + "' -name precious | wc -l"), "2\n");
  EXPECT_TRUE(exists(_home.url("decoy/a")) || exists(_home.url("decoy/b"))) << "was exchanged";
}

TEST_P(Deleting, laysWhatChangedBackIntoItsDirectoryThoughItsNameIsTaken) {
  makeTree(_home.url("folder"), "outer/\n  inner/\n    leaf 3");
  const ItemState outer = look("outer");
  const auto interfere = [&](int call) {
    if (call != 3) return;  // All but the leaf lies in its place.
    runCommand("cd '" + path("") + "'.tidemar-taken-* && mkdir 0/outer/inner && " +
               "echo saved > 1/inner/new && mv 1/inner/new 1/inner/leaf");
  };
  withActionBefore(SYS_renameat2, interfere, [&] { EXPECT_THROW(take(outer), ItemChanged); });
  EXPECT_EQ(readFile(_home.url("folder/outer/inner (2)/leaf")), "saved\n");
  expectNoTrace();
}

TEST_P(Deleting, worksWithoutRoomForADirectoryOfItsOwn) {
  const ItemState single = look("single");
  const ItemState item = look("item");
  withFailingSystemCall(SYS_mkdirat, ENOSPC, [&] {
    take(single);
    take(item);
  });
  EXPECT_FALSE(exists(_home.url("folder/single")));
  EXPECT_FALSE(exists(_home.url("folder/item")));
  makeTree(_home.url("folder"), "item/\n  old");
  const ItemState changing = look("item");
  runCommand("sleep 0.01; echo x > '" + path("item/old") + "'");
  withFailingSystemCall(SYS_mkdirat, ENOSPC, [&] { EXPECT_THROW(take(changing), ItemChanged); });
  EXPECT_TRUE(exists(_home.url("folder/item/old")));
  expectNoTrace();
}

TEST_P(Deleting, givesBackWhatAKilledRunHadTaken) {
  const std::string left = path(".tidemar-taken-0123456789abcdef");
  const auto arrange = [&](const char* tree) {
    makeTree(_home.url("folder"), tree);
    ASSERT_EQ(rename(path("left").c_str(), left.c_str()), 0);
    ASSERT_EQ(chmod(left.c_str(), 0700), 0);
  };
  NoVisitor visitor;
  arrange(R"(
    left/
      tidemar
      0/
        single 5
      1/
      2/)");
  {
    const FileDescriptor running(open(left.c_str(), O_RDONLY));
    ASSERT_EQ(flock(running.get(), LOCK_EX), 0);
    _folder->read(visitor);
    EXPECT_TRUE(exists(FileURL(left))) << "a run is using it";
  }
  _folder->read(visitor);
  EXPECT_EQ(readFile(_home.url("folder/single (2)")), "xxxxx");
  EXPECT_FALSE(exists(FileURL(left)));

  arrange(R"(
    left/
      tidemar
      0/
        tree/
          kept
      1/
        inner/
      2/
        leaf 4)");
  _folder->giveBackTaken();
  EXPECT_TRUE(exists(_home.url("folder/tree/kept")));
  EXPECT_EQ(readFile(_home.url("folder/tree/inner/leaf")), "xxxx") << "entry by entry";

  for (const char* foreign : {"left/\n  0/\n    x", "left/\n  tidemar\n  0/\n    x\n  other",
                              "left/\n  tidemar\n  7/\n    x"}) {
    arrange(foreign);
    _folder->giveBackTaken();
    EXPECT_TRUE(exists(FileURL(left))) << "not surely the program's own: " << foreign;
    runCommand("rm -r '" + left + "'");
  }
  arrange("left/");
  _folder->giveBackTaken();
  EXPECT_FALSE(exists(FileURL(left))) << "left before anything was laid into it";
}

class ToTheBin : public Taking {};
INSTANTIATE_TEST_SUITE_P(Platform, ToTheBin, ::testing::Values(Disposal::bin),
                         [](const auto&) { return "toTheBin"; });

TEST_P(ToTheBin, takesOverTheRecordThatAKilledRunLeft) {
  makeTree(_home.url(), ".local/\n  share/\n    Trash/\n      files/\n      info/");
  const FileURL records = _home.url(".local/share/Trash/info");
  writeFile(FileURL(records.path() + "/single.trashinfo"),
            "[Trash Info]\nPath=" + path("single") + "\nDeletionDate=2020-01-01T00:00:00\n");
  take(look("single"));
  EXPECT_EQ(namesIn(records), std::set<std::string>{"single.trashinfo"});
  EXPECT_EQ(readFile(FileURL(records.path() + "/single.trashinfo")).find("2020"),
            std::string::npos);

  makeTree(_home.url("folder"), "single 1");
  take(look("single"));
  EXPECT_EQ(namesIn(_home.url(".local/share/Trash/files")),
            (std::set<std::string>{"single", "single.2"}))
      << "a record whose item is there stays";

  const FileURL ofAnother(records.path() + "/item.trashinfo");
  writeFile(ofAnother,
            "[Trash Info]\nPath=" + path("item") + "\nDeletionDate=2020-01-01T00:00:00\n");
  const FileDescriptor anotherRun(open(ofAnother.path().c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(anotherRun.get(), LOCK_EX), 0);
  take(look("item"));
  EXPECT_TRUE(exists(ofAnother) && exists(FileURL(records.path() + "/item.2.trashinfo")))
      << "a record that a run is at work with stays";
}

TEST_P(ToTheBin, doesNotFollowABinThatIsMovedAway) {
  take(look("single"));
  const std::string trash = _home.path(".local/share/Trash");
  ASSERT_EQ(rename(trash.c_str(), (trash + "-old").c_str()), 0);
  take(look("item"));
  EXPECT_EQ(namesIn(FileURL(trash + "/files")), std::set<std::string>{"item"});
  EXPECT_EQ(namesIn(FileURL(trash + "-old/files")), std::set<std::string>{"single"});
}

}  // namespace
}  // namespace tidemar::testing
