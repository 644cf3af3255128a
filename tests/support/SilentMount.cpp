#include "support/SilentMount.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <linux/fuse.h>
#include <sys/mount.h>
#include <unistd.h>

#include "support/TestFileSystems.h"

namespace tidemar::testing {

SilentMount::SilentMount(const FileURL& place, const std::string& source) : _place(place) {
  try {
    enterOwnMountNamespace();
    _device = FileDescriptor(open("/dev/fuse", O_RDWR | O_CLOEXEC));
    const std::string options =
        "rootmode=40000,user_id=0,group_id=0,fd=" + std::to_string(_device.get());
    if (!_device || ::mount(source.c_str(), place.path().c_str(), "fuse", MS_NOSUID | MS_NODEV,
                            options.c_str()) != 0) {
      throw std::system_error(errno, std::generic_category(), "no FUSE to test with");
    }
    _thread = std::thread([this] { answer(); });
  } catch (const std::exception& error) {
    _reason = error.what();
  }
}

SilentMount::~SilentMount() {
  if (!isMounted()) return;
  umount2(_place.path().c_str(), MNT_FORCE | MNT_DETACH);
  _thread.join();
}

/// Until the unmounting ends the connection.
void SilentMount::answer() {
  struct Answer {
    fuse_out_header header;
    fuse_init_out values;
  };
  std::vector<char> request(1 << 17);
  while (read(_device.get(), request.data(), request.size()) > 0) {
    fuse_in_header header{};
    std::memcpy(&header, request.data(), sizeof header);
    Answer answer{};
    answer.header.unique = header.unique;
    answer.header.len = sizeof answer.header;
    if (header.opcode == FUSE_INIT) {
      answer.header.len = sizeof answer;
      answer.values.major = FUSE_KERNEL_VERSION;
      answer.values.minor = FUSE_KERNEL_MINOR_VERSION;
      answer.values.max_write = 4096;
    } else {
      _wasTouched = true;
      answer.header.error = -ETIMEDOUT;
    }
    if (write(_device.get(), &answer, answer.header.len) < 0 && errno != ENOENT) return;
  }
}

}  // namespace tidemar::testing
