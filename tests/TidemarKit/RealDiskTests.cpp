#include "Platform/Files/DiskFileManager.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/System.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

/// An engine over the real disk, with a home of its own, that looks at it from the far future.
struct RealWorld {
  FolderStatus status(const Folder& folder) {
    return engine.status(*folder.id, Date{4'000'000'000});
  }

  TemporaryDirectory home;
  ScopedHome scopedHome{home.url()};
  DiskFileManager disk;
  Engine engine{std::make_unique<Store>(), disk};
};

TEST(RealDisk, AStatusAsksNothingOfAMountThatMayNeverAnswer) {
  RealWorld world;
  makeTree(world.home.url(),
           "net/\nfolder/\n  item/\n    net/\n  net/\nDocuments -> net/Documents");
  const SilentMount beside(world.home.url("net"));
  const SilentMount inItem(world.home.url("folder/item/net"));
  const SilentMount inFolder(world.home.url("folder/net"));
  if (!beside.isMounted()) GTEST_SKIP() << beside.reason();
  const Folder folder = world.engine.addFolder(world.home.url("folder"), Date{0});
  world.engine.setTemporary(folder, true, Date{0});
  const FolderStatus status = world.status(folder);
  EXPECT_EQ(status.items.size(), 2U);
  EXPECT_TRUE(status.dueNow.empty());
  for (const SilentMount* mount : {&beside, &inItem, &inFolder})
    EXPECT_FALSE(mount->wasTouched());
}

TEST(RealDisk, ProtectedRootsAreTheHomeTheMountsAndWhatLinksLeadTo) {
  // The first one takes this process into mounts of its own, and an open table stays with the old.
  const TestFileSystem volume(TestFileSystem::Type::tmpfs);
  RealWorld world;
  makeTree(world.home.url(),
           "Documents/\n  Old/\nDownloads/\n"
           "link -> linkToLink\nlinkToLink -> Documents\nlinkToHome -> .");
  const auto isProtected = [&](const FileURL& url) {
    return world.status(world.engine.addFolder(url, Date{0})).isProtectedRoot;
  };
  EXPECT_TRUE(isProtected(world.home.url()));
  EXPECT_TRUE(isProtected(world.home.url("Documents")));
  EXPECT_TRUE(isProtected(world.home.url("link")));
  EXPECT_FALSE(isProtected(world.home.url("Downloads")));
  EXPECT_FALSE(isProtected(world.home.url("Documents/Old")));
  EXPECT_TRUE(System::isProtectedRoot(*world.disk.openFolder(world.home.url("Documents")),
                                      world.home.url("linkToHome"), {}));
  if (!volume.isMounted()) GTEST_SKIP() << volume.reason();
  EXPECT_TRUE(isProtected(volume.url()));
}

}  // namespace
}  // namespace tidemar::testing
