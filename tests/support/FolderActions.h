#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/OpenFolder.h"
#include "TidemarCore/FileURL.h"

/// What tests want of the real disk by path, each done through a folder that is opened for it.
namespace tidemar::testing {

/// Looks at an item as a run does and takes it out of its folder. Throws what stands in its way.
void removeItem(const FileURL& url);
FileURL trashItem(const FileURL& url);

/// One entry of a directory, with its values.
struct ListedEntry {
  FileURL url;
  ResourceValues values;
};

/// The entries of a directory as its reading gives them.
std::vector<ListedEntry> listDirectory(const FileURL& directory);

/// The values of one entry as a look at it gives them.
ResourceValues readResourceValues(const FileURL& url);

std::vector<std::string> readTagNames(const FileURL& directory);
void writeTagNames(const FileURL& directory, std::span<const std::string> tags);

std::string makeBookmark(const FileURL& directory);

/// Where a bookmark leads; see OpenedBookmark.
struct ResolvedBookmark {
  FileURL url;
  bool isStale = false;
  bool isReplacement = false;
};
ResolvedBookmark resolveBookmark(std::string_view bookmark);

}  // namespace tidemar::testing
