#include "Platform/Files/Descriptors/ReadWrite.h"

#include <array>
#include <cerrno>

#include <unistd.h>

namespace tidemar {

std::expected<std::string, int> readToEnd(int descriptor, std::size_t longest) {
  std::string content;
  std::array<char, 16384> buffer{};
  while (content.size() <= longest) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return std::unexpected(errno);
    if (count == 0) return content;
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return std::unexpected(EFBIG);
}

int writeAll(int descriptor, std::string_view content) noexcept {
  while (!content.empty()) {
    const ssize_t written = write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    if (written == 0) return EIO;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace tidemar
