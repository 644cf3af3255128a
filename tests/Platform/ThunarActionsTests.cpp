#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Platform/Extension/ThunarActions.h"
#include "Platform/Extension/ThunarMenuEntry.h"
#include "Platform/PlatformError.h"
#include "support/FileExpectations.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace tidemar::testing;

const std::string foreignAction =
    "<action>\n\t<icon>utilities-terminal</icon>\n\t<name>Terminal</name>\n"
    "\t<unique-id>1367500091418420-1</unique-id>\n\t<command>term %f</command>\n"
    "\t<patterns>*</patterns>\n\t<startup-notify/>\n\t<directories/>\n</action>\n";
const std::string foreignList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n" + foreignAction + "</actions>\n";

class ThunarOnFile : public ::testing::Test {
 protected:
  ThunarOnFile() {
    makeTree(directory.url(), R"(
      .config/
        Thunar/
      system/
        Thunar/
    )");
  }
  std::set<std::string> files() const { return namesIn(directory.url(".config/Thunar")); }
  static void replaceIn(const FileURL& file, std::string_view part, std::string_view by) {
    std::string content = readFile(file);
    const std::size_t at = content.find(part);
    ASSERT_NE(at, std::string::npos) << content;
    writeFile(file, content.replace(at, part.size(), by));
  }

  TemporaryDirectory directory;
  ScopedHome home{directory.url()};
  ScopedEnvironment system{"XDG_CONFIG_DIRS",
                           directory.path("missing") + ":" + directory.path("system")};
  FileURL file = directory.url(".config/Thunar/uca.xml");
  FileURL backup = directory.url(".config/Thunar/uca.xml.before-tidemar");
  ThunarMenuEntry entry{directory.url("bin/it's <100%> & more")};
};

TEST_F(ThunarOnFile, whatTheUserHasIsThereMeanwhileAndByteForByteAfterwards) {
  struct Row {
    const char* name;
    std::string content;
  };
  const std::string head = "<?xml version=\"1.0\"?>\n";
  const Row rows[] = {
      {"a plain list", foreignList},
      {"no line break at the end", "<actions>\n" + foreignAction + "</actions>"},
      {"all in one line", "<actions><action><name>a</name></action></actions>"},
      {"an indented end", head + "  <actions>\n  " + foreignAction + "  </actions>\n\n"},
      {"line breaks of two bytes", "<actions>\r\n<action>\r\n</action>\r\n</actions>\r\n"},
      {"an empty root", head + "<actions a='/>' />\n<!-- after -->"},
      {"comments that look like lists",
       "<!-- <actions> -->\n<actions><!-- </actions> \" -->\n</actions>\n<!-- </actions> -->"},
      {"a document type that declares elements",
       head +
           "<!DOCTYPE actions [\n<!-- don't -->\n<!ELEMENT actions (action)+>\n"
           "<!ENTITY e \"]>\">\n]>\n" +
           "<actions>\n</actions>"},
      {"other actions that speak of ours",
       "<actions><action><name>Tidemar: Make Temporary…</name><unique-id>other</unique-id>"
       "<command>tidemar-make-temporary %F</command></action>"
       "<action><name>app.quernly.tidemar.make-temporary</name>"
       "<description><![CDATA[<unique-id>app.quernly.tidemar.make-temporary</unique-id>]]>"
       "</description></action>"
       "<!-- <action><unique-id>app.quernly.tidemar.make-temporary</unique-id></action> -->"
       "</actions>"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    writeFile(file, row.content);
    chmod(file.path().c_str(), 0644);
    EXPECT_FALSE(entry.isInstalled());
    entry.install();
    EXPECT_TRUE(entry.isInstalled());
    EXPECT_EQ(readFile(backup), row.content);
    if (row.content.find("</actions>") != std::string::npos) {
      EXPECT_EQ(ThunarActions::removingOurs(readFile(file)), row.content);
    }
    const std::string once = readFile(file);
    entry.install();
    EXPECT_EQ(readFile(file), once) << "switched on twice";

    entry.uninstall();
    EXPECT_EQ(readFile(file), row.content);
    EXPECT_EQ(files(), std::set<std::string>{"uca.xml"});
    struct stat values {};
    ASSERT_EQ(stat(file.path().c_str(), &values), 0);
    EXPECT_EQ(values.st_mode & 07777U, 0644U);
  }
}

TEST_F(ThunarOnFile, whatTheUserChangedMeanwhileStaysAndSoDoesTheOldFile) {
  writeFile(file, foreignList);
  entry.install();
  replaceIn(file, "<name>Terminal</name>", "<name>Console</name>");
  entry.uninstall();
  std::string expected = foreignList;
  expected.replace(expected.find("Terminal"), 8, "Console");
  EXPECT_EQ(readFile(file), expected);
  EXPECT_EQ(readFile(backup), foreignList);
}

TEST_F(ThunarOnFile, anActionThatThunarWroteAnewIsStillOurs) {
  const std::string rewritten =
      "<actions>\n<action>\n\t<icon></icon>\n\t<name>Tidemar: Make Temporary…</name>\n"
      "\t<unique-id>app.quernly.tidemar.make-temporary</unique-id>\n"
      "\t<command>&apos;/old/place/tidemar-make-temporary&apos; %F</command>\n"
      "\t<directories/>\n</action>\n" +
      foreignAction + "</actions>\n";
  const std::string others = "<actions>\n" + foreignAction + "</actions>\n";
  writeFile(file, rewritten);
  EXPECT_TRUE(entry.isInstalled());
  entry.install();
  EXPECT_EQ(readFile(file).find("/old/place"), std::string::npos);
  EXPECT_FALSE(exists(backup)) << "a list with our action is none from before it";
  EXPECT_EQ(ThunarActions::removingOurs(readFile(file)), others);
  writeFile(file, rewritten);
  entry.uninstall();
  EXPECT_EQ(readFile(file), others);
}

TEST_F(ThunarOnFile, aUserWithoutAListKeepsTheActionsOfTheSystem) {
  writeFile(directory.url("system/Thunar/uca.xml"), foreignList);
  entry.install();
  EXPECT_EQ(ThunarActions::removingOurs(readFile(file)), foreignList);
  entry.uninstall();
  EXPECT_EQ(files(), std::set<std::string>{});

  std::filesystem::remove_all(directory.path("system"));
  std::filesystem::remove_all(directory.path(".config"));
  entry.install();
  EXPECT_TRUE(entry.isInstalled());
  entry.uninstall();
  EXPECT_EQ(files(), std::set<std::string>{});
}

TEST_F(ThunarOnFile, aListThatIsNotWellFormedIsRefusedAndLeftAlone) {
  const std::string ours =
      "<action><unique-id>app.quernly.tidemar.make-temporary</unique-id></action>";
  for (const std::string& content :
       {std::string(), std::string("text"), std::string("<actions>"),
        std::string("<actions></action>"), std::string("<actions><action></actions>"),
        "<other>" + ours + "</other>", "<actions>" + ours, "<actions>" + ours + "</actions> text",
        "<actions>" + ours + "</actions><actions></actions>",
        "<actions>" + ours + "<!-- </actions>", "<actions>" + ours + "<a b=\"></actions>",
        "<actions>\xff" + ours + "</actions>"}) {
    SCOPED_TRACE(content);
    writeFile(file, content);
    EXPECT_FALSE(entry.isInstalled());
    for (const auto change : {&MenuEntry::install, &MenuEntry::uninstall}) {
      EXPECT_EQ(codeOf([&] { (entry.*change)(); }), EINVAL);
      EXPECT_EQ(readFile(file), content);
      EXPECT_EQ(files(), std::set<std::string>{"uca.xml"});
    }
  }
}

}  // namespace
}  // namespace tidemar
