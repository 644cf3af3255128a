#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"

namespace tidemar {
namespace {

using testing::FakeFileManager;
using Tags = std::vector<std::string>;

const std::string tag = "Tidemar: Temporary";

class Tagging : public ::testing::Test {
 protected:
  void setTags(const Tags& tags) {
    files.tags("/f") = tags;
    files.operations().clear();
  }

  FakeFileManager files;
  std::unique_ptr<OpenFolder> folder = (files.draw("/f/"), files.openFolder(FileURL("/f")));
};

TEST_F(Tagging, comesAndGoesWithoutDisturbingOtherTags) {
  const Tags alike = {
      "tidemar: temporary",  "Tidemar", "Temporary", "x" + tag, tag + "x", "Tidemar:Temporary",
      "Tidemar:  Temporary", "",        " "};
  for (const Tags& others : {Tags{}, Tags{"Work", " Red ", "Work"}, alike}) {
    setTags(others);
    EXPECT_FALSE(TemporaryTag::isTagged(*folder));
    TemporaryTag::remove(*folder);
    EXPECT_TRUE(files.changes().empty()) << "written where needed alone";
    TemporaryTag::add(*folder);
    Tags tagged = others;
    tagged.push_back(tag);
    EXPECT_EQ(files.tags("/f"), tagged);
    EXPECT_TRUE(TemporaryTag::isTagged(*folder));
    TemporaryTag::remove(*folder);
    EXPECT_EQ(files.tags("/f"), others);
  }
  // As other programs write it: in another place, twice, with blanks around it.
  for (const Tags& tagged :
       {Tags{tag, "Work"}, Tags{tag, "Work", tag}, {"Work", " " + tag + "\t"}}) {
    setTags(tagged);
    EXPECT_TRUE(TemporaryTag::isTagged(*folder));
    TemporaryTag::add(*folder);
    EXPECT_TRUE(files.changes().empty());
    TemporaryTag::remove(*folder);
    EXPECT_EQ(files.tags("/f"), Tags{"Work"});
  }
}

TEST_F(Tagging, thatTheDiskRefusesSaysSoAndChangesNothing) {
  files.fail("setTags /f", EROFS);
  EXPECT_NO_THROW(TemporaryTag::remove(*folder));
  EXPECT_THROW(TemporaryTag::add(*folder), PlatformError);
  setTags({tag});
  EXPECT_THROW(TemporaryTag::remove(*folder), PlatformError);

  files.fail("tags /f", EACCES);
  EXPECT_FALSE(TemporaryTag::isTagged(*folder)) << "what can't be read isn't there";
  files.operations().clear();
  EXPECT_THROW(TemporaryTag::tags(*folder), PlatformError);
  EXPECT_THROW(TemporaryTag::add(*folder), PlatformError);
  EXPECT_THROW(TemporaryTag::remove(*folder), PlatformError);
  EXPECT_TRUE(files.changes().empty());
  EXPECT_EQ(files.tags("/f"), Tags{tag});
}

}  // namespace
}  // namespace tidemar
