#include "TidemarKit/System.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "TidemarCore/ProtectedRoots.h"

namespace tidemar::System {
namespace {

struct Describe {
  std::string operator()(const Failure::UnknownCapacity&) const {
    return "the volume doesn't report its capacity";
  }
  std::string operator()(const Failure::UnknownBootTime& failure) const {
    return "the time of the last start can't be read: " +
           std::generic_category().message(failure.code);
  }
};

}  // namespace

Failure::Failure(Case failure)
    : _failure(std::move(failure)), _description(std::visit(Describe{}, _failure)) {}

Capacity capacity(const FileManager& fileManager, const FileURL& url) {
  const VolumeCapacity reported = fileManager.volumeCapacity(url);
  if (!reported.available || !reported.total) throw Failure(Failure::UnknownCapacity{url});
  return {*reported.available, *reported.total};
}

Date bootTime(const FileManager& fileManager) {
  try {
    return fileManager.bootTime();
  } catch (const PlatformError& error) {
    throw Failure(Failure::UnknownBootTime{error.code()});
  }
}

bool isProtectedRoot(const FileManager& fileManager, const FileURL& url, const FileURL& home,
                     std::span<const FileURL> volumes) {
  const std::string path = fileManager.resolvingSymlinksInPath(url);
  return std::ranges::any_of(protectedRootURLs(home, volumes), [&](const FileURL& root) {
    return fileManager.resolvingSymlinksInPath(root) == path;
  });
}

}  // namespace tidemar::System
