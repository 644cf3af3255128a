#include <cstdio>
#include <cstring>
#include <exception>

#include <linux/fuse.h>
#include <sched.h>
#include <sys/mount.h>

#include "support/Testing.h"

namespace tidemar::testing {
namespace {

const char* sizeOf(TestFileSystem::Type type) {
  constexpr std::array<const char*, 4> sizes = {"64M", "300M", "128M", "0"};
  return sizes[static_cast<std::size_t>(type)];
}

const char* makeOptions(TestFileSystem::Type type) {
  return type == TestFileSystem::Type::ext4 ? "-q -F" : "-q -f";
}

}  // namespace

void enterOwnMountNamespace() {
  static bool hasEntered = false;
  if (hasEntered) return;
  if (unshare(CLONE_NEWNS) != 0 ||
      ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    throw std::system_error(errno, std::generic_category(), "can't mount here");
  }
  hasEntered = true;
}

const char* nameOf(TestFileSystem::Type type) {
  constexpr std::array<const char*, 4> names = {"ext4", "xfs", "btrfs", "tmpfs"};
  return names[static_cast<std::size_t>(type)];
}

TestFileSystem::TestFileSystem(Type type, std::string options)
    : _type(type), _options(std::move(options)), _mountPoint(_directory.url("drive")) {
  mkdir(_mountPoint.path().c_str(), 0755);
  try {
    enterOwnMountNamespace();
    if (_type != Type::tmpfs) {
      runCommand("truncate -s " + std::string(sizeOf(type)) + " " + image());
      runCommand("mkfs." + std::string(nameOf(type)) + " " + makeOptions(type) + " " + image());
    }
    mount();
  } catch (const std::exception& error) {
    _reason = std::string("no ") + nameOf(type) + " to test with: " + error.what();
  }
}

TestFileSystem::~TestFileSystem() {
  if (_isMounted) umount2(_mountPoint.path().c_str(), MNT_DETACH);
}

void TestFileSystem::unmount() {
  if (umount2(_mountPoint.path().c_str(), 0) != 0) {
    throw std::system_error(errno, std::generic_category(), "unmount");
  }
  _isMounted = false;
}

void TestFileSystem::mountElsewhere() {
  _mountPoint = _directory.url("elsewhere");
  mkdir(_mountPoint.path().c_str(), 0755);
  mount();
}

void TestFileSystem::mount() {
  const std::string what = _type == Type::tmpfs ? "tmpfs" : image();
  std::string options = _type == Type::tmpfs ? "" : "loop";
  if (!_options.empty()) options += (options.empty() ? "" : ",") + _options;
  runCommand(std::string("mount -t ") + nameOf(_type) + (options.empty() ? "" : " -o " + options) +
             " " + what + " " + _mountPoint.path());
  _isMounted = true;
}

BindMount::BindMount(const FileURL& directory, const FileURL& place) : _place(place) {
  try {
    enterOwnMountNamespace();
    runCommand("mount --bind '" + directory.path() + "' '" + place.path() + "'");
  } catch (const std::exception& error) {
    _reason = error.what();
  }
}

BindMount::~BindMount() {
  if (isMounted()) umount2(_place.path().c_str(), MNT_DETACH);
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
