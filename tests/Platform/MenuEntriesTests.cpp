#include <algorithm>
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
    EXPECT_EQ(files().size(), before.size() + 1);

    command->uninstall();
    EXPECT_FALSE(command->isInstalled());
    EXPECT_EQ(files(), before);
    command->uninstall();
  }
}

TEST_F(MenuEntriesInAHome, aForeignFileInThePlaceIsRefusedAndStays) {
  for (const Place& place : places) {
    SCOPED_TRACE(place.name);
    const FileURL url = directory.url(place.path);
    std::filesystem::create_directories(url.deletingLastPathComponent().path());
    writeFile(url, "[Desktop Entry]\nName=Tidemar: Make Temporary…\n");
    const auto before = files();
    const auto command = entry(place.name);
    EXPECT_FALSE(command->isInstalled());
    EXPECT_EQ(codeOf([&] { command->install(); }), EEXIST);
    command->uninstall();
    EXPECT_EQ(files(), before);
  }
}

TEST_F(MenuEntriesInAHome, anOlderFormCountsAsInstalledAndIsBroughtUpToDate) {
  for (const Place& place : places) {
    SCOPED_TRACE(place.name);
    const auto command = entry(place.name);
    command->install();
    const auto present = files();
    writeFile(directory.url(place.path), "# Written by Tidemar long ago.\nExec=/old/place %f\n");
    EXPECT_TRUE(command->isInstalled());
    command->install();
    EXPECT_EQ(files(), present);
    writeFile(directory.url(place.path), "# Written by Tidemar long ago.\nExec=/old/place %f\n");
    command->uninstall();
    EXPECT_EQ(files().size(), present.size() - 1);
  }
}

TEST_F(MenuEntriesInAHome, aPythonExtensionTakesThePlaceOfTheScriptOnceItsLoaderIsThere) {
  const std::pair<const char*, const char*> loaders[] = {
      {"Files (Nautilus)", "nautilus/extensions-4/libnautilus-python.so"},
      {"Nemo", "nemo/extensions-3.0/libnemo-python.so"},
      {"Caja", "caja/extensions-2.0/libcaja-python.so"}};
  for (const auto& [name, loader] : loaders) {
    SCOPED_TRACE(name);
    const auto before = files();
    entry(name)->install();
    std::filesystem::create_directories(
        std::filesystem::path(directory.path("lib") + "/" + loader));
    const auto command = entry(name);
    EXPECT_TRUE(command->isInstalled());
    command->install();
    const auto installed = files();
    EXPECT_EQ(installed.size(), before.size() + 1) << "one form at a time";
    EXPECT_TRUE(std::ranges::any_of(installed, [](const auto& file) {
      return file.first.ends_with("-python/extensions/tidemar_make_temporary.py");
    }));

    std::filesystem::remove_all(directory.path("lib"));
    EXPECT_TRUE(entry(name)->isInstalled());
    entry(name)->uninstall();
    EXPECT_EQ(files(), before);
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
