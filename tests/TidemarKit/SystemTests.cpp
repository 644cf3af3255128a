#include <cerrno>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarKit/System.h"
#include "support/FakeFileManager.h"

namespace tidemar {
namespace {

using testing::FakeFileManager;

template <class Operation>
System::Failure::Case failureOf(Operation operation) {
  try {
    operation();
  } catch (const System::Failure& failure) {
    return failure.failure();
  }
  throw std::logic_error("no failure");
}

TEST(System, tellsTheCapacityOnlyWhereBothPartsAreReported) {
  FakeFileManager files;
  const FileURL url("/f");
  files.draw("/f/");
  const auto folder = files.openFolder(url);
  files.capacity = {0, 7};
  EXPECT_EQ(System::capacity(*folder), (System::Capacity{0, 7}));

  for (const VolumeCapacity& partial :
       {VolumeCapacity{5, std::nullopt}, VolumeCapacity{std::nullopt, 5}, VolumeCapacity{}}) {
    files.capacity = partial;
    EXPECT_EQ(failureOf([&] { System::capacity(*folder); }),
              System::Failure::Case(System::Failure::UnknownCapacity{url}));
  }

  files.fail("capacity /f", EIO);
  EXPECT_THROW(System::capacity(*folder), PlatformError);
}

TEST(System, hasNoBootTimeWhereItCannotBeRead) {
  FakeFileManager files;
  files.boot = Date{100.5};
  EXPECT_EQ(System::bootTime(files), Date{100.5});
  files.fail("bootTime", EACCES);
  EXPECT_EQ(failureOf([&] { System::bootTime(files); }),
            System::Failure::Case(System::Failure::UnknownBootTime{EACCES}));
}

TEST(System, protectsTheRootsThemselvesAndNothingInThem) {
  FakeFileManager files;
  files.draw(R"(
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
  struct Case {
    const char* path;
    bool isProtected;
  };
  const std::vector<FileURL> volumes = {FileURL("/"), FileURL("/media/stick")};
  const auto isProtected = [&](const char* path, const char* home) {
    return System::isProtectedRoot(*files.openFolder(FileURL(path)), FileURL(home), volumes);
  };
  for (const Case& c :
       {Case{"/", true}, Case{"/Users", true}, Case{"/home/ada", true},
        Case{"/home/ada/Documents", true}, Case{"/home/ada/Desktop", true},
        Case{"/home/ada/Library", true}, Case{"/media/stick", true},
        Case{"/home/ada/linkToDocuments", true}, Case{"/home/ada/linkToLink", true},
        Case{"/home/ada/linkToDownloads", false}, Case{"/home/ada/Downloads", false},
        Case{"/home/ada/Documents/Old", false}, Case{"/home/ada/Library/Caches", false},
        Case{"/home", false}, Case{"/media/stick/photos", false}, Case{"/media/sticks", false},
        Case{"/media", false}}) {
    EXPECT_EQ(isProtected(c.path, "/home/ada"), c.isProtected) << c.path;
  }
  EXPECT_TRUE(isProtected("/real/bob/Documents", "/home/bob"))
      << "a home that is reached by a link is protected where it really lies";
}

}  // namespace
}  // namespace tidemar
