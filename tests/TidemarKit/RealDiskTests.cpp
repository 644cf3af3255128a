#include <memory>

#include <gtest/gtest.h>

#include "Platform/Files/DiskFileManager.h"
#include "TidemarKit/Engine/Engine.h"
#include "support/ScopedEnvironment.h"
#include "support/SilentMount.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

/// An engine over the real disk, with a home of its own, that looks at it from the far future.
struct RealWorld {
  RealWorld() = default;
  explicit RealWorld(const FileURL& place) : folderURL(place) {}

  Folder temporaryFolder(const TemporarySettings& settings = {}) {
    Folder folder = engine.addFolder(folderURL, Date{0});
    folder.settings = settings;
    engine.store().update(folder);
    engine.setTemporary(folder, true, Date{0});
    return folder;
  }

  RunResult run(const Folder& folder) {
    RunGate gate;
    return engine.run(*folder.id, farFuture, gate);
  }

  static constexpr Date farFuture{4'000'000'000};
  TemporaryDirectory home;
  ScopedHome scopedHome{home.url()};
  FileURL folderURL = home.url("folder");
  DiskFileManager disk;
  Engine engine{std::make_unique<Store>(), disk};
};

TEST(RealDisk, ItemsOnEveryFileSystemGoToTheirOwnTrashAndComeBack) {
  for (const auto type : {TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                          TestFileSystem::Type::btrfs, TestFileSystem::Type::tmpfs}) {
    SCOPED_TRACE(nameOf(type));
    const TestFileSystem volume(type);
    if (!volume.isMounted()) GTEST_SKIP() << volume.reason();
    makeTree(volume.url(),
             "folder/\n  file 10\n  tree/\n    \"a\\n\\xff\"\n  link -> file\n  .hidden");
    RealWorld world(volume.url("folder"));
    const Folder folder = world.temporaryFolder();
    const RunResult result = world.run(folder);
    EXPECT_EQ(result.failures.size(), 0U);
    ASSERT_EQ(result.journal.size(), 3U);
    EXPECT_FALSE(exists(volume.url("folder/tree")));
    EXPECT_TRUE(exists(volume.url("folder/.hidden")));
    for (const JournalEntry& entry : result.journal) {
      EXPECT_TRUE(entry.binnedPath->starts_with(volume.url().path() + "/.Trash-"))
          << *entry.binnedPath;
      world.engine.undo(*entry.id, RealWorld::farFuture);
    }
    EXPECT_TRUE(exists(volume.url("folder/tree/a\n\xff")));
    EXPECT_EQ(readFile(volume.url("folder/file")), "xxxxxxxxxx");
  }
}

TEST(RealDisk, AnItemThatHoldsAMountIsNeverPlannedAndAPackageThatDoesIsRefused) {
  RealWorld world;
  TemporaryDirectory elsewhere;
  makeTree(elsewhere.url(), "precious");
  makeTree(world.home.url(), R"(
    folder/
      a-plain/
        mount/
      b-package.AppDir/
        mount/
        part
      c-file)");
  const BindMount inPlain(elsewhere.url(), world.home.url("folder/a-plain/mount"));
  const BindMount inPackage(elsewhere.url(), world.home.url("folder/b-package.AppDir/mount"));
  if (!inPlain.isMounted()) GTEST_SKIP() << inPlain.reason();

  for (const Disposal disposal : {Disposal::delete_, Disposal::bin}) {
    TemporarySettings settings;
    settings.disposal = disposal;
    const Folder folder = world.temporaryFolder(settings);
    const FolderStatus status = world.engine.status(*folder.id, RealWorld::farFuture);
    for (const Removal& removal : status.dueNow) {
      EXPECT_NE(removal.item->url.lastPathComponent(), "a-plain");
    }
    const RunResult result = world.run(folder);
    ASSERT_EQ(result.failures.size(), 1U);
    EXPECT_EQ(result.failures[0].item.url, world.home.url("folder/b-package.AppDir"));
    EXPECT_TRUE(exists(world.home.url("folder/b-package.AppDir/part")));
    EXPECT_TRUE(exists(elsewhere.url("precious")));
    EXPECT_FALSE(exists(world.home.url("folder/c-file")));
    writeFile(world.home.url("folder/c-file"), "");
  }
}

TEST(RealDisk, AStatusAsksNothingOfAMountThatMayNeverAnswer) {
  RealWorld world;
  makeTree(world.home.url(), R"(
    net/
    folder/
      item/
        net/
      net/
    Documents -> net/Documents)");
  const SilentMount beside(world.home.url("net"));
  const SilentMount inItem(world.home.url("folder/item/net"));
  const SilentMount inFolder(world.home.url("folder/net"));
  if (!beside.isMounted()) GTEST_SKIP() << beside.reason();
  const Folder folder = world.temporaryFolder();
  const FolderStatus status = world.engine.status(*folder.id, RealWorld::farFuture);
  EXPECT_EQ(status.items.size(), 2U);
  EXPECT_TRUE(status.dueNow.empty());
  for (const SilentMount* mount : {&beside, &inItem, &inFolder})
    EXPECT_FALSE(mount->wasTouched());
}

TEST(RealDisk, ABindMountOfAPartIsNoRootAndCanBeCleared) {
  RealWorld world;
  makeTree(world.home.url(), "disk/\n  downloads/\n    old\nfolder/");
  const BindMount mount(world.home.url("disk/downloads"), world.home.url("folder"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  const Folder folder = world.temporaryFolder();
  EXPECT_EQ(world.run(folder).journal.size(), 1U);
  EXPECT_FALSE(exists(world.home.url("folder/old")));
}

TEST(RealDisk, ProtectedRootsAreTheHomeTheMountsAndWhatLinksLeadTo) {
  // The first one takes this process into mounts of its own, and an open table stays with the old.
  const TestFileSystem volume(TestFileSystem::Type::tmpfs);
  RealWorld world;
  makeTree(world.home.url(), "Documents/\nDownloads/\nlink -> Documents");
  const auto isProtected = [&](const FileURL& url) {
    const Folder folder = world.engine.addFolder(url, Date{0});
    return world.engine.status(*folder.id, RealWorld::farFuture).isProtectedRoot;
  };
  EXPECT_TRUE(isProtected(world.home.url()));
  EXPECT_TRUE(isProtected(world.home.url("Documents")));
  EXPECT_TRUE(isProtected(world.home.url("link")));
  EXPECT_FALSE(isProtected(world.home.url("Downloads")));
  if (!volume.isMounted()) GTEST_SKIP() << volume.reason();
  EXPECT_TRUE(isProtected(volume.url()));
}

}  // namespace
}  // namespace tidemar
