#include "Platform/Files/Places/Volumes.h"

#include <cerrno>
#include <cstdint>
#include <limits>

#include <sys/statvfs.h>

namespace tidemar {
namespace {

constexpr const char* operation = "read the free space of";

std::int64_t bytes(std::uint64_t blocks, std::uint64_t blockSize) {
  std::int64_t result = 0;
  return __builtin_mul_overflow(blocks, blockSize, &result)
             ? std::numeric_limits<std::int64_t>::max()
             : result;
}

VolumeCapacity capacityOf(const struct statvfs& volume) {
  if (volume.f_blocks == 0) return {};
  return {.available = bytes(volume.f_bavail, volume.f_frsize),
          .total = bytes(volume.f_blocks, volume.f_frsize)};
}

}  // namespace

VolumeCapacity readVolumeCapacity(const FileURL& url) {
  struct statvfs volume {};
  if (statvfs(url.path().c_str(), &volume) != 0) throw PlatformError(operation, url, errno);
  return capacityOf(volume);
}

VolumeCapacity readVolumeCapacity(int directory, const FileURL& url) {
  struct statvfs volume {};
  if (fstatvfs(directory, &volume) != 0) throw PlatformError(operation, url, errno);
  return capacityOf(volume);
}

std::vector<FileURL> volumeURLs(const std::vector<Mount>& mounts) {
  std::vector<FileURL> volumes;
  for (const Mount& mount : mounts) {
    if (mount.isVolume) volumes.emplace_back(mount.mountPoint);
  }
  return volumes;
}

}  // namespace tidemar
