#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Platform/Extension/ThunarActions.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/Text.h"
#include "Platform/UserDefaults.h"
#include "Tidemar/Model/FolderLink.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// Whether the lists differ by an empty root that has got a closing tag.
bool isOpenedRoot(std::string_view before, std::string_view after) {
  const auto end = std::ranges::mismatch(before, after).in1;
  if (!std::string_view(end, before.end()).starts_with("/>")) return false;
  const std::string start(before.begin(), end);
  const std::string rest(end + 2, before.end());
  return after == start + ">\n</actions>" + rest || after == start + ">\r\n</actions>" + rest;
}

/// A directory for the suite's files, in memory where that can be had; it goes with the process.
std::string makeDirectory() {
  static std::string path = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
  path += "/tidemar-fuzz-XXXXXX";
  require(mkdtemp(path.data()) != nullptr, "there is a directory to work in");
  std::atexit([] { std::filesystem::remove_all(path); });
  return path;
}

constexpr std::size_t longestURL = 64 * 1024;

void checkLinkTo(const std::string& path) {
  const std::string link = "tidemar://folder?path=" + percentEncoded(path);
  const bool hasLink = isAbsolute(path) && link.size() <= longestURL;
  require(folderOfLink(link) == (hasLink ? std::optional(FileURL(path)) : std::nullopt),
          "a link to an absolute path leads to it");
}

}  // namespace

void checkThunarActions(std::string_view input) {
  using namespace ThunarActions;
  try {
    const std::string others = removingOurs(input);
    require(!containsOurs(others), "nothing of ours is left");
    require(containsOurs(input) || others == input, "a list without ours stays as it is");

    const std::string added = addingOurs(input, "'/a b' %F");
    require(containsOurs(added), "what was added is there");
    require(addingOurs(added, "'/a b' %F") == added, "adding it again changes nothing");
    const std::string removed = removingOurs(added);
    require(removed == others || isOpenedRoot(others, removed), "all else stays byte for byte");
    require(removingOurs(addingOurs(removed, "x")) == removed, "so does a list that was changed");
  } catch (const Malformed&) {
    // Left alone.
  }
}

/// The input is the file of a suite.
void checkUserDefaults(std::string_view input) {
  static const std::string directory = makeDirectory();
  const FileURL file(directory + "/suite.json");
  const FileURL damaged(directory + "/suite.json.damaged");
  std::filesystem::remove(damaged.path());
  std::ofstream(file.path(), std::ios::binary) << input;

  UserDefaults defaults(file);
  const auto folders = defaults.stringArray("folders");
  const std::string value(input.substr(0, 32));
  defaults.setString("fuzz", value);
  require(defaults.string("fuzz") == displayText(value), "a value that was set is there");

  using nlohmann::json;
  json before = json::parse(input, nullptr, /*allow_exceptions=*/false);
  if (const auto kept = WholeFile::read(damaged)) {
    require(*kept == input, "a damaged file is kept as it was");
    require(!folders, "a damaged file reads as empty");
    constexpr std::size_t surelySmall = 64;
    require(!before.is_object() || input.size() > surelySmall || input.contains('\0'),
            "an ordinary object isn't damaged");
    return;
  }
  require(before.is_object() && !input.contains('\0'), "a suite is an object and nothing else");
  json after = json::parse(*WholeFile::read(file));
  before.erase("fuzz");
  after.erase("fuzz");
  require(after == before, "all other values stay, whatever they are");
}

void checkFolderLink(std::string_view input) {
  checkLinkTo(std::string(input));
  checkLinkTo("/" + std::string(input));

  const auto folder = folderOfLink(input);
  if (!folder) return;
  checkLinkTo(folder->path());
  require(input.starts_with("tidemar://folder"), "scheme and host are compared exactly");
  require(input.size() <= longestURL, "a link has a longest size");
  const std::string longer = std::string(input) + "#?path=/other";
  if (longer.size() <= longestURL) {
    require(folderOfLink(longer) == folder, "a fragment has no say in the folder");
  }
}

}  // namespace tidemar::fuzz
