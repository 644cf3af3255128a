#include "Platform/UserDefaults.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

using Strings = std::vector<std::string>;

class UserDefaultsOnFile : public ::testing::Test {
 protected:
  TemporaryDirectory directory;
  FileURL file = directory.url("suite.json");
  UserDefaults defaults{file};
};

TEST_F(UserDefaultsOnFile, valuesAreThereForAnotherReaderAtOnce) {
  const UserDefaults other(file);
  EXPECT_EQ(other.string("text"), std::nullopt);
  EXPECT_EQ(other.boolean("flag"), std::nullopt);
  EXPECT_EQ(other.stringArray("list"), std::nullopt);

  defaults.setString("text", "quote \" and\nline");
  defaults.setBoolean("flag", false);
  defaults.setStringArray("list", Strings{"/b", "/a", "/b"});
  defaults.setStringArray("none", Strings{});
  EXPECT_EQ(other.string("text"), "quote \" and\nline");
  EXPECT_EQ(other.boolean("flag"), false);
  EXPECT_EQ(other.stringArray("list"), (Strings{"/b", "/a", "/b"}));
  EXPECT_EQ(other.stringArray("none"), Strings{});
  EXPECT_EQ(namesIn(directory.url()), std::set<std::string>{"suite.json"});

  defaults.remove("text");
  EXPECT_EQ(other.string("text"), std::nullopt);
  EXPECT_EQ(other.boolean("flag"), false);
}

TEST_F(UserDefaultsOnFile, valuesOfOtherTypesReadAsNoneAndForeignKeysSurviveInTheirPlaces) {
  writeFile(file, R"({"z": {"deep": [null, 1.5]}, "flag": "true", "list": ["a", 1], "n": null})");
  EXPECT_EQ(defaults.boolean("flag"), std::nullopt);
  EXPECT_EQ(defaults.string("n"), std::nullopt);
  EXPECT_EQ(defaults.stringArray("flag"), std::nullopt);
  EXPECT_EQ(defaults.stringArray("list"), std::nullopt);
  writeFile(file, R"({"z": {"deep": [null, 1.5]}, "flag": true, "a": 9007199254740993})");
  defaults.setBoolean("flag", false);
  EXPECT_EQ(readFile(file),
            "{\n  \"z\": {\n    \"deep\": [\n      null,\n      1.5\n    ]\n  },\n"
            "  \"flag\": false,\n  \"a\": 9007199254740993\n}\n");
}

TEST_F(UserDefaultsOnFile, whatChangesNothingWritesNothing) {
  defaults.remove("missing");
  EXPECT_FALSE(exists(file));

  const Strings paths = {"/caf\xe9", "/b"};
  defaults.setString("text", "a\xff");
  defaults.setBoolean("flag", true);
  defaults.setStringArray("list", paths);
  std::filesystem::create_hard_link(file.path(), directory.path("before"));
  defaults.setString("text", "a\xff");
  defaults.setBoolean("flag", true);
  defaults.setStringArray("list", paths);
  defaults.remove("missing");
  EXPECT_TRUE(std::filesystem::equivalent(file.path(), directory.path("before")));
  EXPECT_EQ(defaults.stringArray("list"), (Strings{"/caf\xef\xbf\xbd", "/b"}));

  defaults.setStringArray("list", Strings{"/b", "/caf\xe9"});
  EXPECT_FALSE(std::filesystem::equivalent(file.path(), directory.path("before")))
      << "another order is another list";
}

TEST_F(UserDefaultsOnFile, aDamagedFileReadsAsEmptyAndIsKeptBesideByTheNextWrite) {
  std::string endless = "{\"flag\": true";
  for (int i = 0; i < 50'000; ++i)
    endless += ", \"" + std::to_string(i) + "\": 1";
  const std::string deep = std::string(300'000, '[') + std::string(300'000, ']');
  const std::string contents[] = {
      "",
      "{\"flag\": true",
      "[true]",
      "{\"flag\": \"\xff\"}",
      std::string("{\"flag\": true}\0{}", 17),
      endless + "}",
      "{\"flag\": true, \"deep\": " + deep + "}",
  };
  for (const std::string& content : contents) {
    SCOPED_TRACE(content.substr(0, 30));
    writeFile(file, content);
    EXPECT_EQ(defaults.boolean("flag"), std::nullopt);
    defaults.remove("flag");
    EXPECT_TRUE(readFile(file) == content);

    defaults.setBoolean("flag", false);
    EXPECT_EQ(defaults.boolean("flag"), false);
    EXPECT_TRUE(readFile(directory.url("suite.json.damaged")) == content);
  }
}

TEST_F(UserDefaultsOnFile, theFolderIsMadeForItsOwnerAloneAndALinkStaysALink) {
  const mode_t umaskBefore = umask(0);
  UserDefaults(directory.url("a/b/suite.json")).setBoolean("flag", true);
  umask(umaskBefore);
  for (const auto& [path, mode] : {std::pair{"a", 0700}, {"a/b", 0700}, {"a/b/suite.json", 0600}}) {
    const auto status = std::filesystem::status(directory.path(path));
    EXPECT_EQ(status.permissions(), std::filesystem::perms(mode)) << path;
  }

  makeTree(directory.url(), "dotfiles/\nsuite.json -> dotfiles/real.json");
  writeFile(directory.url("dotfiles/real.json"), "{}");
  defaults.setBoolean("flag", true);
  EXPECT_TRUE(std::filesystem::is_symlink(file.path()));
  EXPECT_EQ(readFile(directory.url("dotfiles/real.json")), "{\n  \"flag\": true\n}\n");
}

TEST_F(UserDefaultsOnFile, aFailedWriteLeavesTheOldFileAndNothingElse) {
  defaults.setString("text", "short");
  const std::string before = readFile(file);
  withFailingSystemCall(SYS_write, ENOSPC,
                        [&] { EXPECT_THROW(defaults.setString("text", "long"), PlatformError); });
  EXPECT_EQ(readFile(file), before);
  EXPECT_THROW(UserDefaults(directory.url("suite.json/other")).setBoolean("flag", true),
               PlatformError);
  EXPECT_EQ(namesIn(directory.url()), std::set<std::string>{"suite.json"});

  makeTree(directory.url(), "folder/");
  UserDefaults inFolder(directory.url("folder"));
  EXPECT_EQ(inFolder.boolean("flag"), std::nullopt);
  EXPECT_THROW(inFolder.setBoolean("flag", true), PlatformError);
  EXPECT_EQ(namesIn(directory.url()), (std::set<std::string>{"folder", "suite.json"}));
}

}  // namespace
}  // namespace tidemar::testing
