#include "TidemarKit/System.h"
#include "support/FakeFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

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
}  // namespace tidemar::testing
