#include "Platform/Files/Trash/TrashDirectory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/CreateDirectory.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* useOperation = "use the Bin";
constexpr const char* makeOperation = "make the Bin";
constexpr const char* sharedName = ".Trash";
constexpr int openFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

EntryValues readOpened(const FileDescriptor& opened, const FileURL& url) {
  EntryValues values{};
  if (const int code = readEntryValues(opened.get(), "", values); code != 0) {
    throw PlatformError(useOperation, url, code);
  }
  return values;
}

/// What becomes of a directory that isn't there.
enum class Missing { made, leftOut };

/// Opens a directory of a Trash. It must be a real directory of this user's: through any other,
/// someone else would decide where the items come to lie.
FileDescriptor openOwnDirectory(int parent, const std::string& name, const FileURL& url,
                                Missing missing) {
  if (missing == Missing::made && mkdirat(parent, name.c_str(), 0700) != 0 && errno != EEXIST) {
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

TrashDirectory openTrash(int parent, const std::string& name, const FileURL& url, Missing missing) {
  TrashDirectory result;
  result.trash = openOwnDirectory(parent, name, url, missing);
  result.url = pathOfDescriptor(result.trash.get(), url, useOperation);
  const FileURL above = result.url.deletingLastPathComponent();
  result.topURL =
      above.lastPathComponent() == sharedName ? above.deletingLastPathComponent() : above;
  result.filesURL = result.url.appendingPathComponent("files");
  result.infoURL = result.url.appendingPathComponent("info");
  // What goes into one that was moved away since it was opened would be found by nobody.
  if (!leadsTo(url, result.trash.get()))
    throw PlatformError(useOperation, url, ESTALE, "it was moved away or replaced meanwhile");
  result.files = openOwnDirectory(result.trash.get(), "files", result.filesURL, missing);
  result.info = openOwnDirectory(result.trash.get(), "info", result.infoURL, missing);

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

/// The directory for all users that an administrator may have made at the top of a mount, if it is
/// one that no user can turn against another.
FileDescriptor openSharedTrash(int topDirectory) {
  FileDescriptor shared(openat(topDirectory, sharedName, openFlags | O_NOFOLLOW));
  if (!shared) return {};
  EntryValues values{};
  const bool isSticky =
      readEntryValues(shared.get(), "", values) == 0 && (values.stx_mode & S_ISVTX) != 0;
  return isSticky ? std::move(shared) : FileDescriptor();
}

/// Opens a directory that a Trash lies in. Links in its path are the user's own arrangement.
FileDescriptor openAbove(const FileURL& url) {
  FileDescriptor opened(open(url.path().c_str(), openFlags));
  if (!opened) throw PlatformError(useOperation, url, errno);
  return opened;
}

FileURL homeTrashURL() {
  return StandardDirectories::data().appendingPathComponent("Trash");
}

TrashDirectory openHomeTrash(Missing missing) {
  const FileURL url = homeTrashURL();
  return openTrash(openAbove(url.deletingLastPathComponent()).get(), "Trash", url, missing);
}

std::string privateName() {
  return ".Trash-" + std::to_string(geteuid());
}

/// The home Trash, if its directory `files` lies at this path.
std::optional<TrashDirectory> findHomeTrash(const FileURL& filesURL) {
  TrashDirectory home = openHomeTrash(Missing::leftOut);
  EntryValues files{};
  EntryValues found{};
  int code = readEntryValues(home.files.get(), "", files);
  if (code == 0) code = readValuesAt(filesURL.path().c_str(), found);
  if (code != 0) throw PlatformError(useOperation, filesURL, code);
  return isSameDirectory(files, found) ? std::optional(std::move(home)) : std::nullopt;
}

/// The Trash of this name in the top directory of a mount, or in the directory for all users there.
std::optional<TrashDirectory> findTrashOfMount(const FileURL& topURL, const FileURL& url) {
  const FileDescriptor top = openAbove(topURL);
  const FileDescriptor mount = openMountRoot(top.get(), topURL, useOperation);
  if (!isSameDirectory(readOpened(top, topURL), readOpened(mount, topURL))) return std::nullopt;
  const std::string name(url.lastPathComponent());
  if (name == privateName()) return openTrash(top.get(), name, url, Missing::leftOut);
  const FileDescriptor shared = openSharedTrash(top.get());
  if (!shared) return std::nullopt;
  return openTrash(shared.get(), name, url, Missing::leftOut);
}

/// Whether a Trash couldn't be opened because it isn't there, or is none of this user's.
bool saysThatNoneIsThere(int code) {
  constexpr std::array codes = {ENOENT, ENOTDIR, ELOOP, EPERM, ENAMETOOLONG};
  return std::ranges::find(codes, code) != codes.end();
}

}  // namespace

std::uint64_t homeTrashDevice() {
  const FileURL trash = homeTrashURL();
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
  createDirectory(StandardDirectories::data(), makeOperation);
  return openHomeTrash(Missing::made);
}

TrashDirectory openTrashOfMount(int topDirectory, const FileURL& topURL) {
  const std::string user = std::to_string(geteuid());
  if (const FileDescriptor shared = openSharedTrash(topDirectory)) {
    const FileURL url = topURL.appendingPathComponent(sharedName).appendingPathComponent(user);
    try {
      return openTrash(shared.get(), user, url, Missing::made);
    } catch (const PlatformError&) {
      // The freedesktop specification has the user's own directory stand in for one that isn't fit.
    }
  }
  const std::string name = privateName();
  return openTrash(topDirectory, name, topURL.appendingPathComponent(name), Missing::made);
}

std::optional<TrashDirectory> findTrash(const FileURL& filesURL) try {
  const FileURL url = filesURL.deletingLastPathComponent();
  const FileURL above = url.deletingLastPathComponent();
  const std::string_view name = url.lastPathComponent();
  if (filesURL.lastPathComponent() != "files") return std::nullopt;
  if (name == "Trash") return findHomeTrash(filesURL);
  if (name == privateName()) return findTrashOfMount(above, url);
  if (name == std::to_string(geteuid()) && above.lastPathComponent() == sharedName)
    return findTrashOfMount(above.deletingLastPathComponent(), url);
  return std::nullopt;
} catch (const PlatformError& error) {
  if (saysThatNoneIsThere(error.code())) return std::nullopt;
  throw;
}

}  // namespace tidemar
