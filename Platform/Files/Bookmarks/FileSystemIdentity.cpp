#include "Platform/Files/Bookmarks/FileSystemIdentity.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>

#include <linux/btrfs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

/// What the kernel's FS_IOC_GETFSUUID fills in; younger than the headers of some systems.
struct FileSystemUUID {
  std::uint8_t size;
  std::array<std::uint8_t, 16> bytes;
};
constexpr unsigned long getFileSystemUUID = _IOR(0x15, 0, FileSystemUUID);

std::string hexadecimal(std::uint8_t byte) {
  constexpr std::string_view digits = "0123456789abcdef";
  return {digits[byte >> 4U], digits[byte & 0xFU]};
}

/// In the form in which /dev/disk/by-uuid has it, so that all ways to it agree. A file system that
/// was never given a UUID has zeros in its place.
std::optional<std::string> uuidText(std::span<const std::uint8_t, 16> bytes) {
  if (std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; })) return std::nullopt;
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += hexadecimal(bytes[i]);
  }
  return text;
}

std::optional<std::string> uuidFromKernel(int directory) {
  FileSystemUUID uuid{};
  if (ioctl(directory, getFileSystemUUID, &uuid) != 0) return std::nullopt;
  if (uuid.size != uuid.bytes.size()) return std::nullopt;
  return uuidText(uuid.bytes);
}

/// Btrfs doesn't answer the common request, and its number differs from subvolume to subvolume.
std::optional<std::string> uuidFromBtrfs(int directory) {
  btrfs_ioctl_fs_info_args information{};
  if (ioctl(directory, BTRFS_IOC_FS_INFO, &information) != 0) return std::nullopt;
  return uuidText(information.fsid);
}

std::optional<std::string> uuidFromDeviceLinks(dev_t device) {
  std::error_code error;
  std::filesystem::directory_iterator links("/dev/disk/by-uuid", error);
  while (!error && links != std::filesystem::directory_iterator()) {
    struct stat values {};
    if (stat(links->path().c_str(), &values) == 0 && S_ISBLK(values.st_mode) &&
        values.st_rdev == device) {
      return links->path().filename().string();
    }
    links.increment(error);
  }
  return std::nullopt;
}

}  // namespace

FileSystemIdentity fileSystemIdentity(int directory, const FileURL& url,
                                      const std::string& operation) {
  using Kind = FileSystemIdentity::Kind;
  if (auto uuid = uuidFromKernel(directory)) return {Kind::uuid, *std::move(uuid)};

  struct stat values {};
  struct statfs fileSystem {};
  if (fstat(directory, &values) != 0 || fstatfs(directory, &fileSystem) != 0) {
    throw PlatformError(operation, url, errno);
  }
  if (fileSystem.f_type == BTRFS_SUPER_MAGIC) {
    if (auto uuid = uuidFromBtrfs(directory)) return {Kind::uuid, *std::move(uuid)};
  }
  if (auto uuid = uuidFromDeviceLinks(values.st_dev)) return {Kind::uuid, *std::move(uuid)};

  const auto number = std::bit_cast<std::uint64_t>(fileSystem.f_fsid);
  if (number != 0) return {Kind::number, std::to_string(number)};
  return {Kind::type, std::to_string(fileSystem.f_type)};
}

}  // namespace tidemar
