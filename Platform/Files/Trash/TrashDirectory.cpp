#include "Platform/Files/Trash/TrashDirectory.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* useOperation = "use the Bin";
constexpr const char* makeOperation = "make the Bin";
constexpr int openFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

EntryValues readOpened(const FileDescriptor& opened, const FileURL& url) {
  EntryValues values{};
  if (const int code = readEntryValues(opened.get(), "", values); code != 0) {
    throw PlatformError(useOperation, url, code);
  }
  return values;
}

/// Opens a directory of a Trash, made where it is missing. It must be a real directory of this
/// user's: through any other, someone else would decide where the items come to lie.
FileDescriptor openOwnDirectory(int parent, const std::string& name, const FileURL& url) {
  if (mkdirat(parent, name.c_str(), 0700) != 0 && errno != EEXIST) {
    throw PlatformError(makeOperation, url, errno);
  }
  EntryValues entry{};
  if (const int code = readEntryValues(parent, name.c_str(), entry); code != 0) {
    throw PlatformError(useOperation, url, code);
  }
  if (S_ISLNK(entry.stx_mode)) {
    throw PlatformError(useOperation, url, ELOOP, "it is a link and could lead anywhere");
  }
  if (!isDirectory(entry)) throw PlatformError(useOperation, url, ENOTDIR);
  FileDescriptor opened(openat(parent, name.c_str(), openFlags | O_NOFOLLOW));
  if (!opened) throw PlatformError(useOperation, url, errno);
  if (readOpened(opened, url).stx_uid != geteuid()) {
    throw PlatformError(useOperation, url, EPERM, "it belongs to another user");
  }
  return opened;
}

TrashDirectory openParts(const FileDescriptor& trash, const FileURL& url) {
  TrashDirectory result;
  const FileURL place = pathOfDescriptor(trash.get(), url, useOperation);
  result.filesURL = place.appendingPathComponent("files");
  result.infoURL = place.appendingPathComponent("info");
  result.files = openOwnDirectory(trash.get(), "files", result.filesURL);
  result.info = openOwnDirectory(trash.get(), "info", result.infoURL);

  const DirectoryIdentity files = identityOf(readOpened(result.files, result.filesURL));
  result.device = files.device;
  result.mount = files.mount;

  struct statfs fileSystem {};
  if (fstatfs(result.info.get(), &fileSystem) != 0) throw PlatformError(useOperation, url, errno);
  const auto reported = static_cast<std::size_t>(std::max(fileSystem.f_namelen, 0L));
  // Some file systems count in bytes of another encoding and report more than any of them takes.
  const std::size_t longest = reported == 0 ? NAME_MAX : std::min<std::size_t>(reported, NAME_MAX);
  result.longestName = longest - std::min(longest, trashRecordEnding.size());
  return result;
}

/// Makes a directory and those above it as far as they are missing. Links in the path are the
/// user's own arrangement and are followed.
void makeDirectories(const FileURL& url) {
  if (mkdir(url.path().c_str(), 0700) == 0 || errno == EEXIST) return;
  const FileURL parent = url.deletingLastPathComponent();
  if (errno != ENOENT || parent == url) throw PlatformError(makeOperation, url, errno);
  makeDirectories(parent);
  if (mkdir(url.path().c_str(), 0700) != 0 && errno != EEXIST) {
    throw PlatformError(makeOperation, url, errno);
  }
}

/// The directory for all users that an administrator may have made at the top of a mount, if it is
/// one that no user can turn against another.
FileDescriptor openSharedTrash(int topDirectory) {
  FileDescriptor shared(openat(topDirectory, ".Trash", openFlags | O_NOFOLLOW));
  if (!shared) return {};
  EntryValues values{};
  const bool isSticky =
      readEntryValues(shared.get(), "", values) == 0 && (values.stx_mode & S_ISVTX) != 0;
  return isSticky ? std::move(shared) : FileDescriptor();
}

}  // namespace

std::uint64_t homeTrashDevice() {
  const FileURL trash = StandardDirectories::data().appendingPathComponent("Trash");
  struct stat values {};
  // A link in its place counts where it lies itself, so that it is met and refused.
  if (lstat(trash.path().c_str(), &values) == 0) return values.st_dev;
  FileURL url = trash;
  while (errno == ENOENT) {
    url = url.deletingLastPathComponent();
    if (stat(url.path().c_str(), &values) == 0) return values.st_dev;
  }
  throw PlatformError(useOperation, url, errno);
}

TrashDirectory openHomeTrash() {
  const FileURL data = StandardDirectories::data();
  makeDirectories(data);
  const FileDescriptor parent(open(data.path().c_str(), openFlags));
  if (!parent) throw PlatformError(useOperation, data, errno);
  const FileURL url = data.appendingPathComponent("Trash");
  return openParts(openOwnDirectory(parent.get(), "Trash", url), url);
}

TrashDirectory openTrashOfMount(int topDirectory, const FileURL& topURL) {
  const std::string user = std::to_string(geteuid());
  if (const FileDescriptor shared = openSharedTrash(topDirectory)) {
    const FileURL url = topURL.appendingPathComponent(".Trash").appendingPathComponent(user);
    try {
      return openParts(openOwnDirectory(shared.get(), user, url), url);
    } catch (const PlatformError&) {
      // The freedesktop specification has the user's own directory stand in for one that isn't fit.
    }
  }
  const std::string name = ".Trash-" + user;
  const FileURL url = topURL.appendingPathComponent(name);
  return openParts(openOwnDirectory(topDirectory, name, url), url);
}

}  // namespace tidemar
