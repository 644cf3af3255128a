#include "Platform/Extension/MenuEntries.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "Platform/Extension/EntryTexts.h"
#include "Platform/Extension/FileMenuEntry.h"
#include "Platform/Extension/ProgramSearch.h"
#include "Platform/Extension/ThunarMenuEntry.h"
#include "Platform/Files/Places/StandardDirectories.h"

namespace tidemar {
namespace {

constexpr mode_t plainFile = 0600;
constexpr mode_t executableFile = 0700;

FileURL below(const FileURL& directory, std::string_view relative) {
  return FileURL(directory.path() + "/" + std::string(relative));
}

bool hasLibrary(const std::vector<FileURL>& directories, std::string_view relative) {
  return std::ranges::any_of(directories, [&](const FileURL& directory) {
    std::error_code ignored;
    return std::filesystem::exists(below(directory, relative).path(), ignored);
  });
}

/// A file manager of the family that runs Python extensions where a loader for them is installed.
struct PythonFamilyMember {
  const char* name;
  const char* program;
  const char* module;
  const char* loader;
};

constexpr std::array pythonFamily = {
    PythonFamilyMember{"Files (Nautilus)", "nautilus", "Nautilus",
                       "nautilus/extensions-4/libnautilus-python.so"},
    PythonFamilyMember{"Nemo", "nemo", "Nemo", "nemo/extensions-3.0/libnemo-python.so"},
    PythonFamilyMember{"Caja", "caja", "Caja", "caja/extensions-2.0/libcaja-python.so"},
};

OwnedFile pythonExtension(const PythonFamilyMember& member, const FileURL& helper) {
  const std::string directory = std::string(member.program) + "-python/extensions/";
  return {below(StandardDirectories::data(), directory + "tidemar_make_temporary.py"),
          pythonExtensionText(member.module, helper), plainFile};
}

OwnedFile actionOrScript(const PythonFamilyMember& member, const FileURL& helper) {
  const std::string program = member.program;
  if (program == "nemo") {
    return {below(StandardDirectories::data(), "nemo/actions/tidemar-make-temporary.nemo_action"),
            nemoActionText(helper), plainFile};
  }
  // Nautilus keeps its scripts with the data, Caja with the configuration.
  const FileURL base =
      program == "caja" ? StandardDirectories::configuration() : StandardDirectories::data();
  return {below(base, program + "/scripts/" + menuCommandName),
          scriptText(program == "caja" ? "CAJA" : "NAUTILUS", helper), executableFile};
}

/// Only a Python extension knows which folder the menu is for before it opens, so it alone can
/// leave the command out on folders that are Temporary already: the first choice where it runs.
std::vector<OwnedFile> forms(const PythonFamilyMember& member, const FileURL& helper,
                             const std::vector<FileURL>& libraryDirectories) {
  std::vector<OwnedFile> result = {actionOrScript(member, helper), pythonExtension(member, helper)};
  if (hasLibrary(libraryDirectories, member.loader)) std::swap(result[0], result[1]);
  return result;
}

/// The helper's name where $PATH leads to it, or else its path.
std::string nameOrPath(const FileURL& helper) {
  std::error_code ignored;
  const auto found = findProgram(helper.lastPathComponent());
  const bool isFound = found && std::filesystem::equivalent(*found, helper.path(), ignored);
  return isFound ? std::string(helper.lastPathComponent()) : helper.path();
}

}  // namespace

std::vector<FileURL> systemLibraryDirectories() {
  std::vector<FileURL> result;
  for (const char* root : {"/usr/lib", "/usr/lib64", "/usr/local/lib"}) {
    result.emplace_back(root);
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(root, ignored)) {
      // One directory an architecture, such as x86_64-linux-gnu.
      if (entry.path().filename().string().find("-linux-") != std::string::npos)
        result.emplace_back(entry.path().string());
    }
  }
  return result;
}

std::vector<std::unique_ptr<MenuEntry>> menuEntries(
    const FileURL& helper, const std::vector<FileURL>& libraryDirectories) {
  std::vector<std::unique_ptr<MenuEntry>> entries;
  const FileURL serviceMenu = below(StandardDirectories::data(),
                                    "kio/servicemenus/app.quernly.tidemar.make-temporary.desktop");
  // A service menu of the user's own has to be executable to be trusted.
  entries.push_back(std::make_unique<FileMenuEntry>(
      "Dolphin", [] { return hasProgram("dolphin"); },
      std::vector<OwnedFile>{{serviceMenu, dolphinServiceMenuText(helper), executableFile}}));
  for (const PythonFamilyMember& member : pythonFamily) {
    entries.push_back(std::make_unique<FileMenuEntry>(
        member.name, [program = member.program] { return hasProgram(program); },
        forms(member, helper, libraryDirectories)));
  }
  entries.push_back(std::make_unique<ThunarMenuEntry>(helper));
  const FileURL action = below(StandardDirectories::data(),
                               "file-manager/actions/app.quernly.tidemar.make-temporary.desktop");
  entries.push_back(std::make_unique<FileMenuEntry>(
      "PCManFM and PCManFM-Qt",
      [helper, libraryDirectories] {
        return hasProgram("pcmanfm-qt") ||
               (hasProgram("pcmanfm") && canExtendPCManFM(helper, libraryDirectories));
      },
      std::vector<OwnedFile>{
          {action, fileManagerActionText(helper, nameOrPath(helper)), plainFile}}));
  return entries;
}

bool canExtendPCManFM(const FileURL& helper, const std::vector<FileURL>& libraryDirectories) {
  // It leaves out an entry whose program is named by its path.
  return hasLibrary(libraryDirectories, "libfm/modules/gtk-menu-actions.so") &&
         nameOrPath(helper) != helper.path();
}

}  // namespace tidemar
