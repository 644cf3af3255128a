#include "Platform/Extension/MenuEntries.h"
#include "Platform/Extension/ThunarActions.h"
#include "Platform/Extension/ThunarMenuEntry.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

class MenuEntriesInAHome : public ::testing::Test {
 protected:
  std::unique_ptr<MenuEntry> entry(std::string_view name) const {
    for (auto& entry : menuEntries(directory.url("bin/helper"), {directory.url("lib")})) {
      if (entry->name() == name) return std::move(entry);
    }
    throw std::out_of_range(std::string(name));
  }

  /// All files of the home with their contents.
  std::map<std::string, std::string> files() const {
    std::map<std::string, std::string> result;
    for (const auto& found : std::filesystem::recursive_directory_iterator(directory.path())) {
      if (found.is_regular_file())
        result[found.path().lexically_relative(directory.path())] =
            readFile(FileURL(found.path().string()));
    }
    return result;
  }

  TemporaryDirectory directory;
  ScopedHome home{directory.url()};
  ScopedEnvironment system{"XDG_CONFIG_DIRS", directory.path("none")};
};

const std::tuple<const char*, const char*, int> places[] = {
    {"Dolphin", ".local/share/kio/servicemenus/app.quernly.tidemar.make-temporary.desktop", 0700},
    {"Files (Nautilus)", ".local/share/nautilus/scripts/Tidemar: Make Temporary…", 0700},
    {"Nemo", ".local/share/nemo/actions/tidemar-make-temporary.nemo_action", 0600},
    {"Caja", ".config/caja/scripts/Tidemar: Make Temporary…", 0700},
};

TEST_F(MenuEntriesInAHome, eachFileManagerGetsOneFileWhichGoesAgainAlone) {
  for (const auto& [name, path, mode] : places) {
    SCOPED_TRACE(name);
    const FileURL url = directory.url(path);
    std::filesystem::create_directories(url.deletingLastPathComponent().path());
    writeFile(url.deletingLastPathComponent().appendingPathComponent("other"), "# Written by me");
    const auto before = files();
    const auto command = entry(name);
    EXPECT_FALSE(command->isInstalled());

    command->install();
    EXPECT_TRUE(command->isInstalled());
    EXPECT_EQ(std::filesystem::status(url.path()).permissions(), std::filesystem::perms(mode))
        << "or it isn't where the file manager looks";
    const auto installed = files();
    EXPECT_EQ(installed.size(), before.size() + 1);

    const std::string older = "# Written by Tidemar long ago.\nExec=/old/place %f\n";
    writeFile(url, older);
    EXPECT_TRUE(command->isInstalled());
    command->install();
    EXPECT_EQ(files(), installed) << "brought up to date";
    writeFile(url, older);
    command->uninstall();
    EXPECT_FALSE(command->isInstalled());
    EXPECT_EQ(files(), before);
    command->uninstall();

    writeFile(url, "[Desktop Entry]\nName=Tidemar: Make Temporary…\n");
    const auto foreign = files();
    EXPECT_FALSE(command->isInstalled());
    EXPECT_EQ(codeOf([&] { command->install(); }), EEXIST);
    command->uninstall();
    EXPECT_EQ(files(), foreign) << "a foreign file in the place stays";
    unlink(url.path().c_str());
    mkdir(url.path().c_str(), 0700);
    EXPECT_FALSE(command->isInstalled()) << "what can't be read";
  }
}

TEST_F(MenuEntriesInAHome, aPythonExtensionTakesThePlaceOfTheScriptOnceItsLoaderIsThere) {
  for (const auto& [name, loader] :
       {std::pair{"Files (Nautilus)", "lib/nautilus/extensions-4/libnautilus-python.so"},
        {"Nemo", "lib/nemo/extensions-3.0/libnemo-python.so"},
        {"Caja", "lib/caja/extensions-2.0/libcaja-python.so"}}) {
    SCOPED_TRACE(name);
    entry(name)->install();
    std::filesystem::create_directories(directory.path(loader));
    EXPECT_TRUE(entry(name)->isInstalled());
    entry(name)->install();
    ASSERT_EQ(files().size(), 1U) << "one form at a time";
    EXPECT_TRUE(files().begin()->first.ends_with("-python/extensions/tidemar_make_temporary.py"));

    std::filesystem::remove_all(directory.path("lib"));
    EXPECT_TRUE(entry(name)->isInstalled());
    entry(name)->uninstall();
    EXPECT_TRUE(files().empty());
  }
}

TEST_F(MenuEntriesInAHome, onlyAProgramThatTheUserMayRunMakesAFileManagerAvailable) {
  makeTree(directory.url(), "first/\n  thunar/\nsecond/\n  thunar");
  const ScopedEnvironment path(
      "PATH", ":first:" + directory.path("first") + ":" + directory.path("second"));
  EXPECT_FALSE(entry("Thunar")->isAvailable());
  std::filesystem::permissions(directory.path("second/thunar"), std::filesystem::perms::owner_all);
  EXPECT_TRUE(entry("Thunar")->isAvailable());
  EXPECT_FALSE(entry("Dolphin")->isAvailable());
}

TEST_F(MenuEntriesInAHome, pcmanfmIsExtendedWhereItHasItsModuleAndFindsTheHelperByName) {
  runCommand("cd '" + directory.path() + "' && mkdir bin other lib && " +
             "touch bin/helper other/helper other/pcmanfm && chmod 700 bin/* other/*");
  const std::string bin = directory.path("bin");
  const std::string other = directory.path("other");
  const auto expect = [&](const std::string& path, bool isAvailable, const std::string& tried) {
    const ScopedEnvironment scoped("PATH", path);
    const auto command = entry("PCManFM and PCManFM-Qt");
    EXPECT_EQ(command->isAvailable(), isAvailable);
    command->install();
    const std::string text = readFile(directory.url(
        ".local/share/file-manager/actions/app.quernly.tidemar.make-temporary.desktop"));
    EXPECT_NE(text.find("\nTryExec=" + tried + "\n"), std::string::npos) << text;
  };
  expect(bin + ":" + other, false, "helper");
  makeTree(directory.url("lib"), "libfm/\n  modules/\n    gtk-menu-actions.so");
  expect(bin + ":" + other, true, "helper");
  expect(other + ":" + bin, false, bin + "/helper");  // Another program of that name.
  std::filesystem::copy(other + "/pcmanfm", other + "/pcmanfm-qt");
  expect(other, true, bin + "/helper");  // PCManFM-Qt takes paths.
}

const std::string foreignAction =
    "<action>\n\t<icon>utilities-terminal</icon>\n\t<name>Terminal</name>\n"
    "\t<unique-id>1367500091418420-1</unique-id>\n\t<command>term %f</command>\n"
    "\t<patterns>*</patterns>\n\t<startup-notify/>\n\t<directories/>\n</action>\n";
const std::string foreignList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n" + foreignAction + "</actions>\n";

class ThunarOnFile : public ::testing::Test {
 protected:
  ThunarOnFile() { makeTree(directory.url(), ".config/\n  Thunar/\nsystem/\n  Thunar/"); }
  std::set<std::string> files() const { return namesIn(directory.url(".config/Thunar")); }

  TemporaryDirectory directory;
  ScopedHome home{directory.url()};
  ScopedEnvironment system{"XDG_CONFIG_DIRS",
                           directory.path("missing") + ":relative:" + directory.path("system")};
  FileURL file = directory.url(".config/Thunar/uca.xml");
  FileURL backup = directory.url(".config/Thunar/uca.xml.before-tidemar");
  ThunarMenuEntry entry{directory.url("bin/it's <100%> & more")};
};

TEST_F(ThunarOnFile, whatTheUserHasIsThereMeanwhileAndByteForByteAfterwards) {
  const std::string lists[] = {
      foreignList,
      "<actions>\n" + foreignAction + "</actions>",
      "<?xml version=\"1.0\"?>\n  <actions>\n  " + foreignAction + "  </actions>\n\n",
      "<actions>\r\n<action>\r\n</action>\r\n</actions>\r\n",
      "<actions a='/>' />\n<!-- after -->",
      "<!-- <actions> -->\n<actions><!-- </actions> \" -->\n</actions>\n<!-- </actions> -->",
      "<!DOCTYPE actions [\n<!-- don't -->\n<!ELEMENT actions (action)+>\n"
      "<!ENTITY e \"]>\">\n]>\n<actions>\n</actions>",
      // Other actions, which speak of ours.
      "<actions><action><name>Tidemar: Make Temporary…</name><unique-id>other</unique-id>"
      "<command>tidemar-make-temporary %F</command></action>"
      "<action><name>app.quernly.tidemar.make-temporary</name><description><![CDATA[<unique-id>"
      "app.quernly.tidemar.make-temporary</unique-id>]]></description></action><!-- <action>"
      "<unique-id>app.quernly.tidemar.make-temporary</unique-id></action> --></actions>",
  };
  for (const std::string& list : lists) {
    SCOPED_TRACE(list);
    writeFile(file, list);
    chmod(file.path().c_str(), 0644);
    EXPECT_FALSE(entry.isInstalled());
    entry.install();
    EXPECT_TRUE(entry.isInstalled());
    EXPECT_EQ(readFile(backup), list);
    // An element that was closed by its own tag stays opened.
    EXPECT_EQ(ThunarActions::removingOurs(readFile(file)),
              list.contains("</actions>") ? list : "<actions a='/>' >\n</actions>\n<!-- after -->");
    const std::string once = readFile(file);
    entry.install();
    EXPECT_EQ(readFile(file), once) << "switched on twice";

    entry.uninstall();
    EXPECT_EQ(readFile(file), list);
    EXPECT_EQ(files(), std::set<std::string>{"uca.xml"});
    EXPECT_EQ(std::filesystem::status(file.path()).permissions(), std::filesystem::perms(0644));
  }
}

TEST_F(ThunarOnFile, whatTheUserChangedMeanwhileStaysAndSoDoesTheOldFile) {
  const auto renamed = [](std::string list) {
    return list.replace(list.find("<name>Terminal"), 14, "<name>Console");
  };
  writeFile(file, foreignList);
  entry.install();
  writeFile(file, renamed(readFile(file)));
  entry.uninstall();
  EXPECT_EQ(readFile(file), renamed(foreignList));
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
  makeTree(directory.url(), "relative/\n  Thunar/");
  writeFile(directory.url("relative/Thunar/uca.xml"), "<actions/>");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(directory.path());
  entry.install();
  std::filesystem::current_path(before);
  EXPECT_EQ(ThunarActions::removingOurs(readFile(file)), foreignList);
  entry.uninstall();
  EXPECT_EQ(files(), std::set<std::string>{});

  std::filesystem::remove_all(directory.path("system"));
  std::filesystem::remove_all(directory.path(".config"));
  entry.install();
  EXPECT_TRUE(entry.isInstalled());
  for (int time = 0; time < 2; ++time)
    entry.uninstall();  // At last there isn't even a list.
  EXPECT_EQ(files(), std::set<std::string>{});
}

TEST_F(ThunarOnFile, aListThatIsNotWellFormedIsRefusedAndLeftAlone) {
  const std::string ours =
      "<action><unique-id>app.quernly.tidemar.make-temporary</unique-id></action>";
  // An @ stands for our action.
  for (std::string list :
       {"", "text", "<actions></action>", "<actions><action></actions>", "<other>@</other>",
        "<actions>@", "<actions>@</actions> text", "<actions>@</actions><actions></actions>",
        "<actions>@<!-- </actions>", "<actions>@<a b=\"></actions>", "<actions>\xff@</actions>"}) {
    if (list.contains('@')) list.replace(list.find('@'), 1, ours);
    SCOPED_TRACE(list);
    writeFile(file, list);
    EXPECT_FALSE(entry.isInstalled());
    for (const auto change : {&MenuEntry::install, &MenuEntry::uninstall}) {
      EXPECT_EQ(codeOf([&] { (entry.*change)(); }), EINVAL);
      EXPECT_EQ(readFile(file), list);
      EXPECT_EQ(files(), std::set<std::string>{"uca.xml"});
    }
  }
}

}  // namespace
}  // namespace tidemar::testing
