#include "TidemarCore/ProtectedRoots.h"
#include "TidemarCore/SaturatingArithmetic.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(SaturatingArithmetic, staysAtTheEndOfTheRange) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(addingSaturated(most - 1, 1), most);
  EXPECT_EQ(addingSaturated(most, 1), most);
  EXPECT_EQ(addingSaturated(least, -1), least);
  EXPECT_EQ(addingSaturated(most, least), -1);
  EXPECT_EQ(subtractingSaturated(most, -1), most);
  EXPECT_EQ(subtractingSaturated(least, 1), least);
  EXPECT_EQ(subtractingSaturated(-1, most), least);
  EXPECT_EQ(subtractingSaturated(0, least), most);
}

TEST(FileURL, takesAPathApart) {
  // A path, as it is kept, its last component, the path above it.
  const std::array<const char*, 4> rows[] = {
      {"/f/a", "/f/a", "a", "/f"}, {"/f/a//", "/f/a", "a", "/f"}, {"/a", "/a", "a", "/"},
      {"/", "/", "/", "/"},        {"//", "/", "/", "/"},         {"", "", "", ""},
      {"a", "a", "a", ""},
  };
  for (const auto& [path, normalPath, lastPathComponent, parent] : rows) {
    const FileURL url(path);
    EXPECT_EQ(url.path(), normalPath) << path;
    EXPECT_EQ(url.lastPathComponent(), lastPathComponent) << path;
    EXPECT_EQ(url.deletingLastPathComponent().path(), parent) << path;
  }
  EXPECT_EQ(FileURL("/").appendingPathComponent("a").path(), "/a");
  EXPECT_EQ(FileURL("/f").appendingPathComponent("\xff b").path(), "/f/\xff b");
}

TEST(ProtectedRoots, areTheSystemsTheHomesAndTheVolumes) {
  const FileURL volumes[] = {FileURL("/media/stick")};
  std::string paths;
  for (const FileURL& root : protectedRootURLs(FileURL("/home/ada"), volumes))
    paths += root.path() + " ";
  EXPECT_EQ(paths,
            "/ /Applications /Library /System /Users /home/ada /home/ada/Desktop "
            "/home/ada/Documents /home/ada/Library /media/stick ");
}

TEST(EntryURLs, keepTheNamesOfManyEntriesApart) {
  EntryURLs urls(FileURL("/f"));
  std::vector<FileURL> made;
  for (std::size_t i = 0; i < 2000; ++i)
    made.push_back(urls.make(std::string(i % 256, static_cast<char>('a' + i % 26))));
  for (std::size_t i = 0; i < made.size(); ++i) {
    const std::string name(i % 256, static_cast<char>('a' + i % 26));
    EXPECT_EQ(made[i].path(), "/f/" + name);
    EXPECT_EQ(made[i].lastPathComponent(), name);
  }
}

}  // namespace
}  // namespace tidemar::testing
