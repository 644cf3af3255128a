#include "Platform/Desktop/DefaultFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(DefaultFileManager, IsTheOneThatOpensFoldersByItsOwnName) {
  const std::string user = "config/mimeapps.list";
  const std::string desktop = "data/applications/xfce-mimeapps.list";
  const std::string otherDesktop = "data/applications/kde-mimeapps.list";
  const std::string system = "data/applications/mimeapps.list";
  const std::string cache = "data/applications/mimeinfo.cache";
  const std::string dolphin = "[Default Applications]\ninode/directory=dolphin.desktop\n";
  const std::string thunar = "[Default Applications]\ninode/directory=thunar.desktop;\n";
  const struct {
    const char* title;
    std::map<std::string, std::string> files;
    const char* expected;
  } rows[] = {
      {"nothing is known", {}, ""},
      {"the user's choice comes before the desktop's",
       {{user, thunar}, {desktop, dolphin}},
       "Thunar"},
      {"the desktop's comes before the system's, and another desktop's doesn't count",
       {{otherDesktop, thunar}, {system, thunar}, {desktop, dolphin}},
       "Dolphin"},
      {"a choice that is gone is passed over, and so is one that was only added",
       {{user,
         "[Added Associations]\ninode/directory=thunar.desktop;\n"
         "[Default Applications]\ninode/directory=gone.desktop;dolphin.desktop;\n"}},
       "Dolphin"},
      {"without a choice it is a file manager, not an editor",
       {{cache, "[MIME Cache]\ninode/directory=editor.desktop;dolphin.desktop;\n"}},
       "Dolphin"},
      {"without a choice and a file manager there is none",
       {{cache, "[MIME Cache]\ninode/directory=editor.desktop;\n"}},
       ""},
  };
  const TemporaryDirectory root;
  for (const char* directory : {"config", "data/applications"})
    std::filesystem::create_directories(root.path(directory));
  writeFile(root.url("data/applications/dolphin.desktop"),
            "[Desktop Entry]\nName[de]=Delfin\nName=Dolphin\nGenericName=File Manager\n"
            "Categories=System;FileManager;\n[Desktop Action new]\nName=New\n");
  writeFile(root.url("data/applications/thunar.desktop"),
            "[Desktop Entry]\nGenericName=File Manager\nName=Thunar File Manager\n"
            "Categories=System;FileManager;\n");
  writeFile(root.url("data/applications/editor.desktop"),
            "[Desktop Entry]\nName=Editor\nCategories=TextEditor;\n");
  const ScopedEnvironment config("XDG_CONFIG_HOME", root.path("config"));
  const ScopedEnvironment configs("XDG_CONFIG_DIRS", root.path("none"));
  const ScopedEnvironment data("XDG_DATA_HOME", root.path("data"));
  const ScopedEnvironment others("XDG_DATA_DIRS", root.path("none"));
  const ScopedEnvironment current("XDG_CURRENT_DESKTOP", "ubuntu:XFCE");
  for (const auto& row : rows) {
    for (const auto& [path, text] : row.files)
      writeFile(root.url(path), text);
    EXPECT_EQ(DefaultFileManager::name(), row.expected) << row.title;
    for (const auto& [path, text] : row.files)
      std::filesystem::remove(root.path(path));
  }
}

}  // namespace
}  // namespace tidemar::testing
