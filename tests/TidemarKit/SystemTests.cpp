#include <cerrno>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarKit/System.h"
#include "support/FakeFileManager.h"

namespace tidemar {
namespace {

using testing::FakeFileManager;

TEST(System, hasNoCapacityWhereAPartOfItIsNotReportedAndNoBootTimeWhereItCannotBeRead) {
  FakeFileManager files;
  files.draw("/f/");
  const auto folder = files.openFolder(FileURL("/f"));
  files.capacity = {0, 7};
  EXPECT_EQ(System::capacity(*folder), (System::Capacity{0, 7}));
  for (const VolumeCapacity& partial :
       {VolumeCapacity{5, std::nullopt}, VolumeCapacity{std::nullopt, 5}, VolumeCapacity{}}) {
    files.capacity = partial;
    EXPECT_THROW(System::capacity(*folder), System::Failure);
  }
  files.fail("capacity /f", EIO);
  EXPECT_THROW(System::capacity(*folder), PlatformError);

  files.boot = Date{100.5};
  EXPECT_EQ(System::bootTime(files), Date{100.5});
  files.fail("bootTime", EACCES);
  EXPECT_THROW(System::bootTime(files), System::Failure);
}

TEST(System, protectsTheRootsThemselvesAndNothingInThem) {
  FakeFileManager files;
  files.draw(R"(
    /Applications/
    /Library/
    /System/
    /Users/
    /home/ada/
      Desktop/
      Documents/
        Old/
      Downloads/
      Library/
        Caches/
      linkToDocuments -> Documents
      linkToLink -> linkToDocuments
      linkToDownloads -> Downloads
    /media/stick/
      photos/
    /media/sticks/
    /real/bob/
      Documents/
    /home/bob -> /real/bob)");
  const std::vector<FileURL> volumes = {FileURL("/"), FileURL("/media/stick")};
  const auto isProtected = [&](const char* path, const char* home = "/home/ada") {
    return System::isProtectedRoot(*files.openFolder(FileURL(path)), FileURL(home), volumes);
  };
  for (const char* path : {"/", "/Applications", "/Library", "/System", "/Users", "/home/ada",
                           "/home/ada/Documents", "/home/ada/Desktop", "/home/ada/Library",
                           "/home/ada/linkToDocuments", "/home/ada/linkToLink", "/media/stick"})
    EXPECT_TRUE(isProtected(path)) << path;
  for (const char* path :
       {"/home", "/home/ada/Downloads", "/home/ada/linkToDownloads", "/home/ada/Documents/Old",
        "/home/ada/Library/Caches", "/media", "/media/stick/photos", "/media/sticks"})
    EXPECT_FALSE(isProtected(path)) << path;
  EXPECT_TRUE(isProtected("/real/bob/Documents", "/home/bob"))
      << "a home that is reached by a link is protected where it really lies";
}

}  // namespace
}  // namespace tidemar
