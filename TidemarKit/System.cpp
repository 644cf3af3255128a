#include "TidemarKit/System.h"

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

Capacity capacity(const OpenFolder& folder) {
  const VolumeCapacity reported = folder.volumeCapacity();
  if (!reported.available || !reported.total) throw Failure(Failure::UnknownCapacity{folder.url()});
  return {*reported.available, *reported.total};
}

Date bootTime(const FileManager& fileManager) {
  try {
    return fileManager.bootTime();
  } catch (const PlatformError& error) {
    throw Failure(Failure::UnknownBootTime{error.code()});
  }
}

bool isProtectedRoot(const OpenFolder& folder, const FileURL& home,
                     std::span<const FileURL> volumes) {
  return folder.isOneOf(protectedRootURLs(home, volumes));
}

}  // namespace tidemar::System
