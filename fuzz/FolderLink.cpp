#include "Tidemar/Model/FolderLink.h"

#include <string>

#include "Platform/Files/Trash/PercentEncoding.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

constexpr std::size_t longestURL = 64 * 1024;

std::string linkTo(std::string_view path) {
  return "tidemar://folder?path=" + percentEncoded(path);
}

void checkPath(const std::string& path) {
  const std::string link = linkTo(path);
  const bool hasLink =
      path.starts_with('/') && path.find('\0') == std::string::npos && link.size() <= longestURL;
  require(folderOfLink(link) == (hasLink ? std::optional(FileURL(path)) : std::nullopt),
          "a link to an absolute path leads to it");
}

}  // namespace

void check(std::string_view input) {
  checkPath(std::string(input));
  checkPath("/" + std::string(input));

  const auto folder = folderOfLink(input);
  if (!folder) return;
  checkPath(folder->path());
  require(input.starts_with("tidemar://folder"), "scheme and host are compared exactly");
  require(input.size() <= longestURL, "a link has a longest size");
  const std::string longer = std::string(input) + "#?path=/other";
  if (longer.size() <= longestURL) {
    require(folderOfLink(longer) == folder, "a fragment has no say in the folder");
  }
}

}  // namespace tidemar::fuzz
