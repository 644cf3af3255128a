#include <cerrno>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"

namespace tidemar {
namespace {

using testing::FakeFileManager;
using Tags = std::vector<std::string>;

struct Case {
  const char* name;
  Tags tags;
  bool isTagged;
  Tags added;
  Tags removed;
};

const std::string tag(TemporaryTag::name);

const std::vector<Case> cases = {
    {"a folder without tags", {}, false, {tag}, {}},
    {"other tags keep their order and their blanks",
     {"Work", " Red ", "Work"},
     false,
     {"Work", " Red ", "Work", tag},
     {"Work", " Red ", "Work"}},
    {"the tag before another", {tag, " Work"}, true, {tag, " Work"}, {" Work"}},
    {"the tag twice", {tag, "Work", tag}, true, {tag, "Work", tag}, {"Work"}},
    {"the tag with blanks of another program around it",
     {"Work", " " + tag + "\t"},
     true,
     {"Work", " " + tag + "\t"},
     {"Work"}},
    {"other letters, parts and neighbours are other tags",
     {"tidemar: temporary", "Tidemar", "Temporary", "x" + tag, tag + "x", "Tidemar:Temporary",
      "Tidemar:  Temporary", "", " "},
     false,
     {"tidemar: temporary", "Tidemar", "Temporary", "x" + tag, tag + "x", "Tidemar:Temporary",
      "Tidemar:  Temporary", "", " ", tag},
     {"tidemar: temporary", "Tidemar", "Temporary", "x" + tag, tag + "x", "Tidemar:Temporary",
      "Tidemar:  Temporary", "", " "}},
};

TEST(TemporaryTag, comesAndGoesWithoutDisturbingOtherTags) {
  EXPECT_EQ(TemporaryTag::name, "Tidemar: Temporary");
  for (const Case& c : cases) {
    FakeFileManager files;
    files.draw("/f/");
    const auto folder = files.openFolder(FileURL("/f"));
    files.tags("/f") = c.tags;
    EXPECT_EQ(TemporaryTag::isTagged(*folder), c.isTagged) << c.name;

    TemporaryTag::add(*folder);
    EXPECT_EQ(files.tags("/f"), c.added) << c.name;
    EXPECT_TRUE(TemporaryTag::isTagged(*folder)) << c.name;
    EXPECT_EQ(files.changes().size(), c.isTagged ? 0U : 1U) << c.name << ": writes where needed";

    files.tags("/f") = c.tags;
    files.operations().clear();
    TemporaryTag::remove(*folder);
    EXPECT_EQ(files.tags("/f"), c.removed) << c.name;
    EXPECT_EQ(files.changes().size(), c.isTagged ? 1U : 0U) << c.name << ": writes where needed";
  }
}

TEST(TemporaryTag, isReadAnewEachTime) {
  FakeFileManager files;
  files.draw("/f/");
  const auto folder = files.openFolder(FileURL("/f"));
  EXPECT_FALSE(TemporaryTag::isTagged(*folder));
  files.tags("/f") = {tag};
  EXPECT_TRUE(TemporaryTag::isTagged(*folder));
}

TEST(TemporaryTag, thatCannotBeReadIsNotThereAndIsNotWritten) {
  FakeFileManager files;
  files.draw("/f/");
  files.tags("/f") = {tag};
  const auto folder = files.openFolder(FileURL("/f"));
  files.fail("tags /f", EACCES);
  EXPECT_FALSE(TemporaryTag::isTagged(*folder));
  EXPECT_THROW(TemporaryTag::tags(*folder), PlatformError);
  EXPECT_THROW(TemporaryTag::add(*folder), PlatformError);
  EXPECT_THROW(TemporaryTag::remove(*folder), PlatformError);
  EXPECT_EQ(files.changes(), std::vector<std::string>{});
}

TEST(TemporaryTag, saysSoWhereTheDiskRefusesIt) {
  FakeFileManager files;
  files.draw("/f/");
  const auto folder = files.openFolder(FileURL("/f"));
  files.fail("setTags /f", EROFS);
  EXPECT_NO_THROW(TemporaryTag::remove(*folder));
  EXPECT_THROW(TemporaryTag::add(*folder), PlatformError);
  files.tags("/f") = {tag};
  EXPECT_THROW(TemporaryTag::remove(*folder), PlatformError);
  EXPECT_EQ(files.tags("/f"), Tags{tag});
}

}  // namespace
}  // namespace tidemar
