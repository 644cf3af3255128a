#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(TemporaryTag, comesAndGoesWithoutDisturbingOtherTagsAndIsWrittenWhereNeededAlone) {
  using Tags = std::vector<std::string>;
  const std::string tag = "Tidemar: Temporary";
  const Tags alike = {
      "tidemar: temporary",  "Tidemar", "Temporary", "x" + tag, tag + "x", "Tidemar:Temporary",
      "Tidemar:  Temporary", "",        " "};
  FakeFileManager files;
  files.draw("/f/");
  const auto folder = files.openFolder(FileURL("/f"));
  for (const Tags& others : {Tags{}, Tags{"Work", " Red ", "Work"}, alike}) {
    files.tags("/f") = others;
    EXPECT_FALSE(TemporaryTag::isTagged(*folder));
    TemporaryTag::remove(*folder);
    TemporaryTag::add(*folder);
    Tags tagged = others;
    tagged.push_back(tag);
    EXPECT_EQ(files.tags("/f"), tagged);
    TemporaryTag::remove(*folder);
    EXPECT_EQ(files.tags("/f"), others);
  }
  // As other programs write it: in another place, twice, with blanks around it.
  for (const Tags& tagged : {Tags{tag, "Work"}, {tag, "Work", tag}, {"Work", " " + tag + "\t"}}) {
    files.tags("/f") = tagged;
    EXPECT_TRUE(TemporaryTag::isTagged(*folder));
    TemporaryTag::add(*folder);
    TemporaryTag::remove(*folder);
    EXPECT_EQ(files.tags("/f"), Tags{"Work"});
  }
  EXPECT_EQ(files.changes(), Tags(9, "setTags /f"));
}

}  // namespace
}  // namespace tidemar::testing
