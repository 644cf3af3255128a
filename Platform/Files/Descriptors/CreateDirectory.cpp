#include "Platform/Files/Descriptors/CreateDirectory.h"

#include <cerrno>
#include <vector>

#include <sys/stat.h>

#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

bool isDirectory(const FileURL& url) {
  struct stat values {};
  return stat(url.path().c_str(), &values) == 0 && S_ISDIR(values.st_mode);
}

}  // namespace

void createDirectory(const FileURL& directory, const std::string& operation) {
  std::vector<FileURL> missing;
  for (FileURL url = directory; !url.path().empty() && !isDirectory(url);
       url = url.deletingLastPathComponent()) {
    missing.push_back(url);
    if (url.path() == "/") break;
  }
  for (; !missing.empty(); missing.pop_back()) {
    const FileURL& url = missing.back();
    if (mkdir(url.path().c_str(), S_IRWXU) == 0) continue;
    const int code = errno;
    // Another program may have made it just now.
    if (!isDirectory(url)) throw PlatformError(operation, url, code);
  }
}

}  // namespace tidemar
