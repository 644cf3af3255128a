#include "Platform/Files/Changes/LeftCopy.h"

#include <cerrno>
#include <exception>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Walk/DirectoryReader.h"
#include "Platform/Files/Walk/DirectoryStack.h"

namespace tidemar {
namespace {

/// Opens a directory by its name in another one, and gives itself the rights to empty it: a copy
/// has the modes of what it was copied from.
int openOwn(const OpenDirectory& above, const std::string& name, OpenDirectory& result) {
  const FileDescriptor place(
      openat(above.descriptor.get(), name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!place) return errno;
  EntryValues values{};
  if (const int code = readEntryValues(place.get(), "", values); code != 0) return code;
  if (isBoundary(values, above.identity)) return EXDEV;
  const std::string link = "/proc/self/fd/" + std::to_string(place.get());
  if ((values.stx_mode & S_IRWXU) != S_IRWXU && chmod(link.c_str(), S_IRWXU) != 0) return errno;
  result.descriptor = FileDescriptor(openat(place.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  result.identity = identityOf(values);
  return result.descriptor ? 0 : errno;
}

/// Deletes all that lies in a directory, innermost first, with a bounded number of descriptors.
class Emptying {
 public:
  int run(OpenDirectory root) {
    int code = enter(std::move(root));
    while (code == 0 && !_stack.isEmpty())
      code = _stack.top().pending.empty() ? leave() : descend();
    return code;
  }

 private:
  int enter(OpenDirectory directory) {
    _stack.push(std::move(directory));
    bool hasDeleted = true;
    // A listing that shrinks while it is read may leave entries out.
    while (hasDeleted) {
      hasDeleted = false;
      if (const int code = deleteFiles(hasDeleted); code != 0) return code;
    }
    return 0;
  }

  int deleteFiles(bool& hasDeleted) {
    OpenDirectory& top = _stack.top();
    const int directory = top.descriptor.get();
    top.pending.clear();
    lseek(directory, 0, SEEK_SET);
    _reader.start(directory);
    while (const auto entry = _reader.next()) {
      if (entry->type != DT_DIR && unlinkat(directory, entry->name, 0) == 0) {
        hasDeleted = true;
      } else if (entry->type == DT_DIR || errno == EISDIR) {
        top.pending.push_back({entry->name, false});
      } else if (errno != ENOENT) {
        return errno;
      }
    }
    return 0;
  }

  int descend() {
    OpenDirectory& top = _stack.top();
    _names.push_back(std::move(top.pending.back().name));
    top.pending.pop_back();
    OpenDirectory child;
    const int code = openOwn(top, _names.back(), child);
    return code != 0 ? code : enter(std::move(child));
  }

  int leave() {
    if (const int code = _stack.pop(); code != 0 || _stack.isEmpty()) return code;
    const std::string name = std::move(_names.back());
    _names.pop_back();
    return unlinkat(_stack.top().descriptor.get(), name.c_str(), AT_REMOVEDIR) == 0 ? 0 : errno;
  }

  DirectoryStack _stack;
  std::vector<std::string> _names;  ///< Of the directories on the way, the first one's left out.
  DirectoryReader _reader;
};

}  // namespace

int deleteCopy(const PrivateDirectory& directory) {
  if (directory.placeCount() == 0) return 0;
  FileDescriptor place;
  EntryValues values{};
  int code = openDirectory(directory.descriptor(), "0", place);
  if (code == 0) code = readEntryValues(place.get(), "", values);
  if (code != 0) return code;
  DirectoryReader reader;
  reader.start(place.get());
  const bool hasCopy = reader.next().has_value();
  if (directory.placeCount() > 1 || (hasCopy && reader.next())) return EEXIST;
  return Emptying().run({.descriptor = std::move(place), .identity = identityOf(values)});
}

void sweepLeftCopy(int folder, const std::string& name) noexcept try {
  if (!PrivateDirectory::isName(name, PrivateDirectory::Kind::copy)) return;
  if (const auto left = PrivateDirectory::openLeft(folder, name)) deleteCopy(*left);
} catch (const std::exception&) {
  // What can't be read waits for the next opening of the folder.
}

}  // namespace tidemar
