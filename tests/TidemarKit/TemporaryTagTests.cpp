#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

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

}  // namespace
}  // namespace tidemar::testing
