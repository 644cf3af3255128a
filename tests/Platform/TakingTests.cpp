#include <sys/file.h>
#include <sys/mman.h>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/ReadLease.h"
#include "Platform/FolderAndBin.h"

namespace tidemar::testing {
namespace {

constexpr const char* drawing = R"(
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

/// What lies in the folder is looked at and then let go of, with something in between.
class Taking : public FolderAndBin, public ::testing::WithParamInterface<Disposal> {
 protected:
  Taking() { makeTree(folder(""), drawing); }

  ItemState look(const std::string& name) {
    TreeRecorder ignored;
    return _opened->look(name, GetParam(), ignored);
  }

  void take(const ItemState& item) {
    if (GetParam() == Disposal::bin) {
      _opened->trashItem(item);
    } else {
      _opened->removeItem(item);
    }
  }

  std::string path(const std::string& inFolder) const { return folder(inFolder).path(); }
  std::string run(const std::string& command) const { return runIn(folder(""), command); }

  /// Whether nothing of the program's own is left in the folder, and nothing in the Bin.
  void expectNoTrace() {
    _opened.reset();
    for (const std::string& name : namesIn(folder("")))
      EXPECT_FALSE(name.starts_with(".tidemar")) << name;
    EXPECT_TRUE(namesIn(bin("files")).empty() && namesIn(bin("info")).empty());
  }

  std::unique_ptr<OpenFolder> _opened = open();
};

INSTANTIATE_TEST_SUITE_P(Platform, Taking, ::testing::Values(Disposal::bin, Disposal::delete_),
                         [](const auto& disposal) {
                           return disposal.param == Disposal::bin ? "toTheBin" : "deleting";
                         });

TEST_P(Taking, asksForNoFileMoreOftenThanItsStepsNeed) {
  constexpr int count = 30;
  for (int i = 0; i < count; ++i)
    writeFile(folder(std::to_string(i)), "x");
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
          take(look(std::to_string(i)));
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
    erase(folder(""));
    makeTree(home(""), "folder/");
    makeTree(folder(""), drawing);
    _opened = open();
    const ItemState item = look(name);
    ASSERT_FALSE(item.obstacle) << item.obstacle->what();
    EXPECT_GT(item.latestChange.seconds, 0) << "a look waits until the clock has passed it";
    run(change);
    const std::string before = run("find . | sort");
    EXPECT_THROW(take(item), ItemChanged);
    _opened.reset();
    EXPECT_EQ(run("find . | sort"), before);
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
    const FileDescriptor writer(::open(path(name).c_str(), flags));
    EXPECT_EQ(isInTheWay(), GetParam() == Disposal::delete_) << name;
  }
  FileDescriptor file(::open(path("item/file").c_str(), O_RDWR));
  void* mapping = mmap(nullptr, 3, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
  ASSERT_NE(mapping, MAP_FAILED);
  file.close();
  EXPECT_EQ(isInTheWay(), GetParam() == Disposal::delete_) << "a mapping";
  munmap(mapping, 3);

  const FileDescriptor reader(::open(path("item/file").c_str(), O_RDONLY));
  EXPECT_FALSE(isInTheWay()) << "who only reads is in nobody's way";
}

TEST_P(Taking, whoComesToWriteDuringALeaseIsTold) {
  std::jthread writer;
  ReadLease lease;
  ASSERT_EQ(lease.open(AT_FDCWD, path("item/file").c_str()), 0);
  EXPECT_EQ(lease.check(), 0);
  writer = std::jthread([&] { FileDescriptor(::open(path("item/file").c_str(), O_WRONLY)); });
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (lease.check() == 0 && std::chrono::steady_clock::now() < deadline)
    std::this_thread::yield();
  EXPECT_EQ(lease.check(), ETXTBSY);
}

TEST_P(Taking, goesWhereverTheFolderIsByThenUnlessThatIsInTheBin) {
  for (const char* name : {"item/a", "item/sub/b", "item/sub/deep/c", "kept"})
    ASSERT_EQ(link(path("item/file").c_str(), path(name).c_str()), 0);
  const ItemState item = look("item");
  move(folder(""), home("moved"));
  makeTree(home(""), "folder/\n  item/\n    precious");
  take(item);
  EXPECT_TRUE(exists(folder("item/precious")));
  EXPECT_EQ(readFile(home("moved/kept")), "xxx");
  if (GetParam() == Disposal::bin) {
    EXPECT_EQ(pathIn(bin("info/item.trashinfo")), home("moved/item").path());
  }

  const ItemState single = look("single");
  std::filesystem::create_directories(bin("files").path());
  move(home("moved"), bin("files/moved"));
  EXPECT_THROW(take(single), PlatformError);
  _opened.reset();
  EXPECT_EQ(namesIn(bin("files/moved")), (std::set<std::string>{".hidden", "kept", "single"}));
}

class Deleting : public Taking {};
INSTANTIATE_TEST_SUITE_P(Platform, Deleting, ::testing::Values(Disposal::delete_),
                         [](const auto&) { return "deleting"; });

TEST_P(Deleting, emptiesNoOtherDirectoryThatCameInThePlaceOfOneThatWasClosedMeanwhile) {
  const std::string decoy = home("decoy").path();
  makeTree(home(""), "decoy/\n  a/\n    precious\n  b/\n    precious");
  std::string below;
  for (int level = 0; level < 20; ++level)
    below += "/d";
  run("mkdir -p deep/a" + below + " deep/b" + below);
  const ItemState deep = look("deep");
  const auto exchange = [&](int call) {
    for (const std::string& name : namesIn(folder(""))) {
      if (call == 1 && name.starts_with(".tidemar-taken-"))
        renameat2(-1, path(name + "/0/deep").c_str(), -1, decoy.c_str(), RENAME_EXCHANGE);
    }
  };
  withActionBefore(SYS_unlinkat, exchange, [&] { EXPECT_THROW(take(deep), ItemChanged); });
  EXPECT_EQ(runIn(home(""), "find -name precious | wc -l"), "2\n");
  EXPECT_TRUE(exists(home("decoy/a")) || exists(home("decoy/b"))) << "was exchanged";
}

TEST_P(Deleting, laysWhatChangedBackIntoItsDirectoryThoughItsNameIsTaken) {
  makeTree(folder(""), "outer/\n  inner/\n    leaf 3");
  const ItemState outer = look("outer");
  const auto interfere = [&](int call) {
    if (call != 3) return;  // All but the leaf lies in its place.
    run("cd .tidemar-taken-* && mkdir 0/outer/inner && echo saved > 1/inner/new && "
        "mv 1/inner/new 1/inner/leaf");
  };
  withActionBefore(SYS_renameat2, interfere, [&] { EXPECT_THROW(take(outer), ItemChanged); });
  EXPECT_EQ(readFile(folder("outer/inner (2)/leaf")), "saved\n");
  expectNoTrace();
}

TEST_P(Deleting, worksWithoutRoomForADirectoryOfItsOwn) {
  const ItemState single = look("single");
  const ItemState item = look("item");
  withFailingSystemCall(SYS_mkdirat, ENOSPC, [&] {
    take(single);
    take(item);
  });
  EXPECT_FALSE(exists(folder("single")));
  EXPECT_FALSE(exists(folder("item")));
  makeTree(folder(""), "item/\n  old");
  const ItemState changing = look("item");
  run("sleep 0.01; echo x > item/old");
  withFailingSystemCall(SYS_mkdirat, ENOSPC, [&] { EXPECT_THROW(take(changing), ItemChanged); });
  EXPECT_TRUE(exists(folder("item/old")));
  expectNoTrace();
}

TEST_P(Deleting, givesBackWhatAKilledRunHadTaken) {
  EXPECT_EQ(nameBeside("name", 1), "name (2)");
  EXPECT_EQ(nameBeside("report.pdf", 2), "report (3).pdf");
  EXPECT_EQ(nameBeside(std::string(255, 'n'), 1).size(), 255U);

  const FileURL left = folder(".tidemar-taken-0123456789abcdef");
  const auto arrange = [&](const char* tree) {
    makeTree(folder(""), tree);
    move(folder("left"), left);
    setMode(left, 0700);
  };
  TreeRecorder ignored;
  makeTree(folder(""), "\"single (2)\" 1");
  arrange("left/\n  tidemar\n  0/\n    single 5\n  1/\n  2/");
  {
    const FileDescriptor running(::open(left.path().c_str(), O_RDONLY));
    ASSERT_EQ(flock(running.get(), LOCK_EX), 0);
    _opened->read(ignored);
    EXPECT_TRUE(exists(left)) << "a run is using it";
  }
  TreeRecorder read;
  _opened->read(read);
  EXPECT_NE(read.names.find("single (3)"), std::string::npos) << "it is read with what came back";
  for (const auto& [name, content] :
       {std::pair{"single", "xxx"}, {"single (2)", "x"}, {"single (3)", "xxxxx"}})
    EXPECT_EQ(readFile(folder(name)), content);
  EXPECT_FALSE(exists(left));

  arrange("left/\n  tidemar\n  0/\n    tree/\n      kept\n  1/\n    inner/\n  2/\n    leaf 4");
  _opened->giveBackTaken();
  EXPECT_TRUE(exists(folder("tree/kept")));
  EXPECT_EQ(readFile(folder("tree/inner/leaf")), "xxxx") << "entry by entry";

  for (const char* foreign : {"left/\n  0/\n    x", "left/\n  tidemar\n  0/\n    x\n  other",
                              "left/\n  tidemar\n  7/\n    x"}) {
    arrange(foreign);
    _opened->giveBackTaken();
    EXPECT_TRUE(exists(left)) << "not surely the program's own: " << foreign;
    erase(left);
  }
  arrange("left/");
  _opened->giveBackTaken();
  EXPECT_FALSE(exists(left)) << "left before anything was laid into it";
}

class ToTheBin : public Taking {};
INSTANTIATE_TEST_SUITE_P(Platform, ToTheBin, ::testing::Values(Disposal::bin),
                         [](const auto&) { return "toTheBin"; });

TEST_P(ToTheBin, takesOverTheRecordThatAKilledRunLeft) {
  const auto leaveRecord = [&](const std::string& name) {
    erase(lay(bin(""), name, path(name)));
    return bin("info/" + name + ".trashinfo");
  };
  const FileURL record = leaveRecord("single");
  const std::string text = readFile(record);
  take(look("single"));
  EXPECT_EQ(namesIn(bin("info")), std::set<std::string>{"single.trashinfo"});
  EXPECT_NE(readFile(record), text);

  makeTree(folder(""), "single 1");
  take(look("single"));
  EXPECT_EQ(namesIn(bin("files")), (std::set<std::string>{"single", "single.2"}))
      << "a record whose item is there stays";

  const FileURL ofAnother = leaveRecord("item");
  const FileDescriptor anotherRun(::open(ofAnother.path().c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(anotherRun.get(), LOCK_EX), 0);
  take(look("item"));
  EXPECT_TRUE(exists(ofAnother) && exists(bin("info/item.2.trashinfo")))
      << "a record that a run is at work with stays";
}

TEST_P(ToTheBin, doesNotFollowABinThatIsMovedAway) {
  take(look("single"));
  move(bin(""), home("old"));
  take(look("item"));
  EXPECT_EQ(namesIn(bin("files")), std::set<std::string>{"item"});
  EXPECT_EQ(namesIn(home("old/files")), std::set<std::string>{"single"});
}

}  // namespace
}  // namespace tidemar::testing
