#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Desktop/DefaultFileManager.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using testing::ScopedEnvironment;
using testing::TemporaryDirectory;

struct File {
  const char* path;
  const char* text;
};

TEST(DefaultFileManager, IsTheOneThatOpensFoldersByItsOwnName) {
  const File dolphin{"data/applications/dolphin.desktop",
                     "[Desktop Entry]\nName[de]=Delfin\nName=Dolphin\nGenericName=File Manager\n"
                     "Categories=System;FileManager;\n[Desktop Action new]\nName=New\n"};
  const File thunar{"data/applications/thunar.desktop",
                    "[Desktop Entry]\nGenericName=File Manager\nName=Thunar File Manager\n"
                    "Categories=System;FileManager;\n"};
  const File editor{"data/applications/editor.desktop",
                    "[Desktop Entry]\nName=Editor\nCategories=TextEditor;\n"};
  const File cache{"data/applications/mimeinfo.cache",
                   "[MIME Cache]\ninode/directory=editor.desktop;dolphin.desktop;\n"};
  const struct {
    const char* title;
    std::vector<File> files;
    const char* expected;
  } rows[] = {
      {"nothing is known", {}, ""},
      {"the user's choice comes before the desktop's",
       {dolphin,
        thunar,
        {"config/mimeapps.list", "[Default Applications]\ninode/directory=thunar.desktop;\n"},
        {"data/applications/xfce-mimeapps.list",
         "[Default Applications]\ninode/directory=dolphin.desktop\n"}},
       "Thunar"},
      {"the desktop's comes before the system's, and another desktop's doesn't count",
       {dolphin,
        thunar,
        {"data/applications/kde-mimeapps.list",
         "[Default Applications]\ninode/directory=thunar.desktop\n"},
        {"data/applications/mimeapps.list",
         "[Default Applications]\ninode/directory=thunar.desktop\n"},
        {"data/applications/xfce-mimeapps.list",
         "[Default Applications]\ninode/directory=dolphin.desktop\n"}},
       "Dolphin"},
      {"a choice that is gone is passed over, and so is one that was only added",
       {dolphin,
        thunar,
        {"config/mimeapps.list",
         "[Added Associations]\ninode/directory=thunar.desktop;\n"
         "[Default Applications]\ninode/directory=gone.desktop;dolphin.desktop;\n"}},
       "Dolphin"},
      {"without a choice it is a file manager, not an editor", {dolphin, editor, cache}, "Dolphin"},
      {"without a choice and a file manager there is none", {editor, cache}, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const TemporaryDirectory root;
    for (const char* directory : {"config", "data/applications"})
      std::filesystem::create_directories(root.path(directory));
    for (const File& file : row.files)
      testing::writeFile(root.url(file.path), file.text);
    const ScopedEnvironment config("XDG_CONFIG_HOME", root.path("config"));
    const ScopedEnvironment configs("XDG_CONFIG_DIRS", root.path("none"));
    const ScopedEnvironment data("XDG_DATA_HOME", root.path("data"));
    const ScopedEnvironment others("XDG_DATA_DIRS", root.path("none"));
    const ScopedEnvironment desktop("XDG_CURRENT_DESKTOP", "ubuntu:XFCE");
    EXPECT_EQ(DefaultFileManager::name(), row.expected);
  }
}

}  // namespace
}  // namespace tidemar
