#include "Platform/Files/Walk/Listing.h"

#include <cerrno>
#include <system_error>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/DirectoryStack.h"
#include "Platform/Files/Walk/HiddenList.h"

namespace tidemar {
namespace {

std::vector<DirectoryEntry> listOpenDirectory(int directory, const FileURL& url) {
  EntryValues directoryValues{};
  if (const int code = readEntryValues(directory, "", directoryValues); code != 0) {
    throw PlatformError("read", url, code);
  }
  const DirectoryIdentity identity = identityOf(directoryValues);

  DirectoryReader reader;
  reader.start(directory);
  const HiddenList hidden =
      reader.lists(".hidden").value_or(true) ? HiddenList::ofDirectory(directory) : HiddenList();
  std::vector<DirectoryEntry> entries;
  while (const auto entry = reader.next()) {
    EntryValues values{};
    const int code = readEntryValues(directory, entry->name, values);
    if (code == ENOENT) continue;
    const FileURL entryURL = url.appendingPathComponent(entry->name);
    if (code != 0) throw PlatformError("read", entryURL, code);
    entries.push_back({entryURL, resourceValues(values, entry->name, hidden.hides(entry->name),
                                                isBoundary(values, identity))});
  }
  return entries;
}

}  // namespace

std::vector<DirectoryEntry> listDirectory(const FileURL& url) {
  FileDescriptor directory;
  if (const int code = openDirectory(AT_FDCWD, url.path().c_str(), directory); code != 0) {
    throw PlatformError("read", url, code);
  }
  try {
    return listOpenDirectory(directory.get(), url);
  } catch (const std::system_error& error) {
    throw PlatformError("read", url, error.code().value());
  }
}

ResourceValues readResourceValues(const FileURL& url) {
  const FileDescriptor parent = openParent(url, "read");
  const std::string name(url.lastPathComponent());
  EntryValues parentValues{};
  EntryValues values{};
  int code = readEntryValues(parent.get(), "", parentValues);
  if (code == 0) code = readEntryValues(parent.get(), name.c_str(), values);
  if (code != 0) throw PlatformError("read", url, code);
  try {
    const bool isHidden =
        name.starts_with('.') || HiddenList::ofDirectory(parent.get()).hides(name);
    return resourceValues(values, name, isHidden, isBoundary(values, identityOf(parentValues)));
  } catch (const std::system_error& error) {
    throw PlatformError("read", url, error.code().value());
  }
}

}  // namespace tidemar
