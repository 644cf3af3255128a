#include <cerrno>
#include <filesystem>
#include <map>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Platform/Extension/MenuEntries.h"
#include "support/FileExpectations.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace tidemar::testing;

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

struct Place {
  const char* name;
  const char* path;
  mode_t mode;
};

const Place places[] = {
    {"Dolphin", ".local/share/kio/servicemenus/app.quernly.tidemar.make-temporary.desktop", 0700},
    {"Files (Nautilus)", ".local/share/nautilus/scripts/Tidemar: Make Temporary…", 0700},
    {"Nemo", ".local/share/nemo/actions/tidemar-make-temporary.nemo_action", 0600},
    {"Caja", ".config/caja/scripts/Tidemar: Make Temporary…", 0700},
};

TEST_F(MenuEntriesInAHome, eachFileManagerGetsOneFileWhichGoesAgainAlone) {
  for (const Place& place : places) {
    SCOPED_TRACE(place.name);
    const FileURL url = directory.url(place.path);
    std::filesystem::create_directories(url.deletingLastPathComponent().path());
    writeFile(url.deletingLastPathComponent().appendingPathComponent("other"), "# Written by me");
    const auto before = files();
    const auto command = entry(place.name);
    EXPECT_FALSE(command->isInstalled());

    command->install();
    EXPECT_TRUE(command->isInstalled());
    struct stat values {};
    ASSERT_EQ(stat(url.path().c_str(), &values), 0) << "not where the file manager looks";
    EXPECT_EQ(values.st_mode & 07777U, place.mode);
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
  makeTree(directory.url(), R"(
    first/
      thunar/
    second/
      thunar
  )");
  const ScopedEnvironment path(
      "PATH", ":first:" + directory.path("first") + ":" + directory.path("second"));
  EXPECT_FALSE(entry("Thunar")->isAvailable());
  std::filesystem::permissions(directory.path("second/thunar"), std::filesystem::perms::owner_all);
  EXPECT_TRUE(entry("Thunar")->isAvailable());
  EXPECT_FALSE(entry("Dolphin")->isAvailable());
}

}  // namespace
}  // namespace tidemar
