#include <cstdio>
#include <cstring>
#include <exception>

#include <linux/fuse.h>
#include <sched.h>
#include <sys/mount.h>

#include "support/Testing.h"

namespace tidemar::testing {

void enterOwnMountNamespace() {
  static bool hasEntered = false;
  if (hasEntered) return;
  if (unshare(CLONE_NEWNS) != 0 ||
      ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "can't mount here");
  }
  hasEntered = true;
}

TestMount::~TestMount() {
  if (_isMounted) umount2(_place.path().c_str(), MNT_DETACH);
}

void TestMount::attempt(const std::function<void()>& mount) {
  try {
    enterOwnMountNamespace();
    mount();
    _isMounted = true;
  } catch (const std::exception& error) {
    _reason = std::string("not mounted: ") + error.what();
  }
}

const char* nameOf(TestFileSystem::Type type) {
  constexpr std::array<const char*, 4> names = {"ext4", "xfs", "btrfs", "tmpfs"};
  return names[static_cast<std::size_t>(type)];
}

TestFileSystem::TestFileSystem(Type type, std::string options)
    : TestMount(TemporaryDirectory::url("drive")), _type(type), _options(std::move(options)) {
  mkdir(_place.path().c_str(), 0755);
  attempt([this] {
    constexpr std::array<const char*, 3> sizes = {"64M", "300M", "128M"};
    if (_type != Type::tmpfs) {
      runCommand(std::string("truncate -s ") + sizes[static_cast<std::size_t>(_type)] + " " +
                 image() + " && mkfs." + nameOf(_type) +
                 (_type == Type::ext4 ? " -q -F " : " -q -f ") + image());
    }
    mount();
  });
}

void TestFileSystem::unmount() {
  if (umount2(_place.path().c_str(), 0) != 0) {
    throw std::system_error(errno, std::generic_category(), "unmount");
  }
  _isMounted = false;
}

void TestFileSystem::mountElsewhere() {
  _place = TemporaryDirectory::url("elsewhere");
  mkdir(_place.path().c_str(), 0755);
  mount();
}

void TestFileSystem::mount() {
  const std::string what = _type == Type::tmpfs ? ",rw tmpfs " : ",loop " + image() + " ";
  runCommand(std::string("mount -t ") + nameOf(_type) + " -o " + _options + what + _place.path());
  _isMounted = true;
}

BindMount::BindMount(const FileURL& directory, const FileURL& place) : TestMount(place) {
  attempt([&] { runCommand("mount --bind '" + directory.path() + "' '" + place.path() + "'"); });
}

std::string runCommand(const std::string& command) {
  const std::string line = "{ PATH=$PATH:/usr/sbin:/sbin; " + command + "; } 2>&1";
  FILE* pipe = popen(line.c_str(), "r");
  if (pipe == nullptr) throw std::system_error(errno, std::generic_category(), command);
  std::string output;
  std::array<char, 1024> buffer{};
  while (const std::size_t size = fread(buffer.data(), 1, buffer.size(), pipe)) {
    output.append(buffer.data(), size);
  }
  if (pclose(pipe) != 0) throw std::runtime_error(command + ": " + output);
  return output;
}

SilentMount::SilentMount(const FileURL& place, const std::string& source) : TestMount(place) {
  attempt([&] {
    _device = FileDescriptor(open("/dev/fuse", O_RDWR | O_CLOEXEC));
    const std::string options =
        "rootmode=40000,user_id=0,group_id=0,fd=" + std::to_string(_device.get());
    if (!_device || ::mount(source.c_str(), place.path().c_str(), "fuse", MS_NOSUID | MS_NODEV,
                            options.c_str()) != 0) {
      throw std::system_error(errno, std::generic_category(), "no FUSE to test with");
    }
    _thread = std::thread([this] { answer(); });
  });
}

SilentMount::~SilentMount() {
  if (!_isMounted) return;
  umount2(_place.path().c_str(), MNT_FORCE | MNT_DETACH);
  _isMounted = false;
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
