#include "FakeDesktop.h"
#include "Platform/Desktop/AutostartEntry.h"
#include "Platform/Desktop/AutostartLoginItem.h"
#include "Platform/Desktop/LoginItemsSettings.h"

namespace tidemar::testing {
namespace {

using Status = LoginItem::Status;

TEST(AutostartEntry, IsReadAsTheDesktopsReadIt) {
  const std::string whole = AutostartEntry::text(FileURL("/usr/bin/tidemar"));
  const struct {
    Status status;
    std::vector<std::string> texts;
  } rows[] = {
      {Status::requiresApproval,
       {whole + "Hidden=true\n", whole + "X-GNOME-Autostart-enabled=false\n",
        whole + "X-MATE-Autostart-enabled=false\n", whole + "Hidden \t= true \r\n",
        whole + "X-GNOME-Autostart-enabled=true\nHidden=true", "[Desktop Entry]\nHidden=true"}},
      {Status::enabled,
       {whole, whole + "Hidden=True\nX-GNOME-Autostart-enabled=False\n",
        whole + "Hidden[de]=true\n", whole + "hidden=true\n", whole + "XHidden=true\n",
        whole + "#Hidden=true\n # Hidden=true\n", whole + "[Desktop Action x]\nHidden=true\n",
        "Hidden=true\n" + whole, "[Desktop Entry X]\nHidden=true\n" + whole}},
      {Status::off,
       {"", "[Desktop Entry]\n[Desktop Action x]\nExec=x\n", "[Desktop Entry]\nExec=\n",
        "[Desktop Entry]\nName=Tidemar\n", std::string("\0\xff\n[\n=\n", 7)}},
  };
  for (const auto& row : rows) {
    for (const std::string& text : row.texts)
      EXPECT_EQ(AutostartEntry::status(text), row.status) << text;
  }
}

TEST(AutostartEntry, NamesTheProgramSoThatItIsFoundAgain) {
  const struct {
    const char* path;
    const char* command;
  } rows[] = {
      {"/usr/bin/tidemar", R"(/usr/bin/tidemar)"},
      {"/o/a b'c/tidemar", R"("/o/a b'c/tidemar")"},
      {"/o/a\"b`$c/tidemar", R"("/o/a\\"b\\`\\$c/tidemar")"},
      {R"(/o/a\b/tidemar)", R"("/o/a\\\\b/tidemar")"},
      {"/o/a\nb\tc/tidemar", R"("/o/a\nb\tc/tidemar")"},
      {"/o/ä/tidemar", "/o/ä/tidemar"},
  };
  for (const auto& row : rows) {
    const std::string line = std::string("\nExec=") + row.command + " --launched-at-login\n";
    const std::string text = AutostartEntry::text(FileURL(row.path));
    EXPECT_NE(text.find(line), text.npos) << row.path << "\n" << text;
  }
  for (const char* path : {"/o/a=b/tidemar", "/o/100%/tidemar", "/o/\xff/tidemar", "tidemar", ""})
    EXPECT_THROW(AutostartEntry::text(FileURL(path)), PlatformError) << path;
}

class LoginItemTest : public ::testing::Test {
 protected:
  bool isRegisteringRefused() {
    return codeOf([&] { item.registerItem(); }) != 0;
  }

  TemporaryDirectory home;
  ScopedHome scopedHome{home.url()};
  FileURL file = home.url(".config/autostart/app.quernly.tidemar.desktop");
  AutostartLoginItem item{FileURL("/usr/bin/tidemar")};
};

TEST_F(LoginItemTest, IsThereFromRegisteringToUnregistering) {
  EXPECT_EQ(item.status(), Status::off);
  EXPECT_FALSE(exists(home.url(".config"))) << "asking writes nothing";
  item.unregisterItem();
  item.registerItem();
  EXPECT_EQ(item.status(), Status::enabled);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path(".config/autostart")), {}),
            1)
      << "nothing is left beside it";
  item.unregisterItem();
  EXPECT_EQ(item.status(), Status::off);
  EXPECT_FALSE(exists(file));
}

TEST_F(LoginItemTest, WhatTheUserChoseInTheSystemsSettingsStays) {
  item.registerItem();
  const std::string text = readFile(file);
  for (const char* choice : {"X-GNOME-Autostart-enabled=false\n", "X-GNOME-Autostart-Delay=5\n"}) {
    writeFile(file, text + choice);
    item.registerItem();
    EXPECT_EQ(readFile(file), text + choice);
  }
  writeFile(file, text + "Hidden=true\n");
  EXPECT_EQ(item.status(), Status::requiresApproval);
  item.registerItem();
  EXPECT_EQ(readFile(file), text) << "a hidden entry may be shown by no settings at all";
}

TEST_F(LoginItemTest, WhatNoDesktopWouldStartIsOff) {
  const struct {
    const char* command;  ///< Of the shell, where $F is the file.
    bool canRegister;
  } rows[] = {
      {"echo no entry > $F", true},
      {"ln -s elsewhere $F", true},
      {"mkfifo $F.pipe; ln -s $F.pipe $F", false},
      {"mkfifo $F", false},
      {"mkdir -p $F/x", false},
  };
  std::filesystem::create_directories(home.path(".config/autostart"));
  for (const auto& row : rows) {
    std::filesystem::remove_all(file.path());
    runCommand("F='" + file.path() + "'; " + row.command);
    EXPECT_EQ(item.status(), Status::off) << row.command;
    EXPECT_EQ(isRegisteringRefused(), !row.canRegister) << row.command;
    EXPECT_EQ(item.status(), row.canRegister ? Status::enabled : Status::off) << row.command;
  }
  EXPECT_THROW(item.unregisterItem(), PlatformError) << "a directory isn't taken away";
  EXPECT_TRUE(exists(FileURL(file.path() + "/x")));

  std::filesystem::remove_all(home.path(".config"));
  writeFile(home.url(".config"), "");
  EXPECT_EQ(item.status(), Status::off);
  EXPECT_TRUE(isRegisteringRefused());
}

TEST_F(LoginItemTest, ALinkToAnEntryIsReadAndTakenAwayAlone) {
  item.registerItem();
  const FileURL elsewhere = home.url("elsewhere.desktop");
  std::filesystem::rename(file.path(), elsewhere.path());
  std::filesystem::create_symlink(elsewhere.path(), file.path());
  EXPECT_EQ(item.status(), Status::enabled);
  item.unregisterItem();
  EXPECT_FALSE(exists(file));
  EXPECT_TRUE(exists(elsewhere));
}

TEST_F(LoginItemTest, SettingsAreTheDesktopsProgramOrTheDirectory) {
  const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", "other:KDE");
  const ScopedEnvironment path("PATH", home.path());
  const OpenedURLs opened("file");
  const FileURL called = home.url("called");
  const auto add = [&](const char* program) {
    const std::string part = home.path("part");
    writeFile(home.url(program),
              "#!/bin/sh\necho $0 $1 >" + part + "; /bin/mv " + part + " " + called.path() + "\n");
    chmod(home.path(program).c_str(), 0700);
  };
  add("gnome-tweaks");
  LoginItemsSettings::open();
  EXPECT_EQ(opened.urls,
            QStringList(QString::fromStdString("file://" + home.path(".config/autostart"))));
  add("systemsettings5");
  LoginItemsSettings::open();
  waitUntil([&] { return exists(called); });
  EXPECT_EQ(readFile(called), home.path("systemsettings5") + " kcm_autostart\n");
  EXPECT_EQ(opened.urls.size(), 1);
}

}  // namespace
}  // namespace tidemar::testing
