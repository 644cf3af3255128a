#include "Platform/Files/Tags.h"

#include <cerrno>
#include <string_view>

#include <sys/xattr.h>

#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* attribute = "user.xdg.tags";

/// What most lists of tags fit into, so that a read is one system call.
constexpr std::size_t usualSize = 512;

std::string readAttribute(int directory, const FileURL& url) {
  constexpr const char* operation = "read the tags of";
  std::string value(usualSize, '\0');
  while (true) {
    const ssize_t size = fgetxattr(directory, attribute, value.data(), value.size());
    if (size >= 0) {
      value.resize(static_cast<std::size_t>(size));
      return value;
    }
    if (errno == ENODATA || errno == ENOTSUP) return {};
    if (errno != ERANGE) throw PlatformError(operation, url, errno);
    // Another program may write a longer list between the two calls; then it takes another turn.
    const ssize_t needed = fgetxattr(directory, attribute, nullptr, 0);
    value.resize(needed > 0 ? static_cast<std::size_t>(needed) : usualSize);
  }
}

constexpr const char* writeOperation = "change the tags of";

PlatformError writeFailure(const FileURL& url, int code) {
  switch (code) {
    case ENOTSUP:
      return {writeOperation, url, code,
              "the drive it lies on can't keep tags. Choose a folder on another drive"};
    case EPERM:
      return {writeOperation, url, code,
              "it is locked against changes. Unlock it, or choose another folder"};
    case EACCES:
      return {writeOperation, url, code,
              "you may not change it. Change its permissions, or choose another folder"};
    case EROFS:
      return {writeOperation, url, code,
              "the drive it lies on can only be read. Make the drive writable and try again"};
    case ENOSPC:
    case EDQUOT:
      return {writeOperation, url, code,
              "there is no room left for its tags. Make room on the drive, or take a tag off"};
    case E2BIG:
    case ERANGE:
      return {writeOperation, url, code,
              "its tags are longer than the drive can keep. Take a tag off and try again"};
    default:
      return {writeOperation, url, code};
  }
}

}  // namespace

std::vector<std::string> readTagNames(int directory, const FileURL& url) {
  return splitTagNames(readAttribute(directory, url));
}

void writeTagNames(int directory, const FileURL& url, std::span<const std::string> tags) {
  const std::string value = joinTagNames(tags);
  if (value.empty()) {
    if (fremovexattr(directory, attribute) == 0 || errno == ENODATA || errno == ENOTSUP) return;
  } else {
    if (fsetxattr(directory, attribute, value.data(), value.size(), 0) == 0) return;
  }
  throw writeFailure(url, errno);
}

std::vector<std::string> splitTagNames(std::string_view value) {
  std::vector<std::string> tags;
  if (value.empty()) return tags;
  for (std::size_t comma = value.find(','); comma != value.npos; comma = value.find(',')) {
    tags.emplace_back(value.substr(0, comma));
    value.remove_prefix(comma + 1);
  }
  tags.emplace_back(value);
  return tags;
}

std::string joinTagNames(std::span<const std::string> tags) {
  std::string value;
  for (const std::string& tag : tags) {
    if (&tag != tags.data()) value += ',';
    value += tag;
  }
  return value;
}

}  // namespace tidemar
