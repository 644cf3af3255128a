#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"
#include "support/Files.h"

namespace tidemar::testing {

/// Something mounted for one test, in a mount namespace of this process, so that nothing of it
/// outlives the tests. Needs the right to mount: where the machine doesn't grant it, `isMounted` is
/// false and the test has to skip with `reason`.
class TestMount {
 public:
  TestMount(const TestMount&) = delete;
  TestMount& operator=(const TestMount&) = delete;

  bool isMounted() const noexcept { return _isMounted; }
  const std::string& reason() const noexcept { return _reason; }

  /// What lies there while it is mounted, the empty mount point while it isn't.
  const FileURL& url() const noexcept { return _place; }

 protected:
  explicit TestMount(FileURL place) : _place(std::move(place)) {}
  ~TestMount();

  /// Mounts it, or keeps as the reason what `mount` throws.
  void attempt(const std::function<void()>& mount);

  FileURL _place;
  bool _isMounted = false;
  std::string _reason;
};

/// A small file system: ext4, XFS or btrfs in a sparse file, or a tmpfs.
class TestFileSystem : private TemporaryDirectory, public TestMount {
 public:
  enum class Type { ext4, xfs, btrfs, tmpfs };

  /// `options` are mount options, such as "size=64k".
  explicit TestFileSystem(Type type, std::string options = {});

  using TestMount::url;
  FileURL url(const std::string& relative) const { return FileURL(_place.path() + "/" + relative); }

  /// Takes the drive away. All descriptors on it must be closed.
  void unmount();

  /// Brings it back. A tmpfs comes back as a new one.
  void mount();

  /// The file that it lies in, to be changed while it is taken away.
  std::string image() const { return path("image"); }

  /// Brings it back at another mount point, which is its `url` from then on.
  void mountElsewhere();

 private:
  Type _type;
  std::string _options;
};

const char* nameOf(TestFileSystem::Type type);

/// Shows a directory at a second place as well, for as long as it lives.
class BindMount : public TestMount {
 public:
  BindMount(const FileURL& directory, const FileURL& place);
};

/// From here on this process has its own view of the mounts, which the kernel takes down with it.
/// Throws std::system_error where the machine doesn't grant that.
void enterOwnMountNamespace();

/// Runs a command line of the shell and answers what it printed, or throws that as a
/// std::runtime_error if it failed.
std::string runCommand(const std::string& command);

/// Stands for a mount whose server is gone, on which every access would wait for ever: a FUSE file
/// system that refuses each request at once and remembers that there was one. A test that is held
/// up by it in earnest fails here instead of hanging.
class SilentMount : public TestMount {
 public:
  /// At an existing directory. `source` is the device that the table of mounts gives for it.
  explicit SilentMount(const FileURL& place, const std::string& source = "server:/");
  ~SilentMount();

  /// Whether anything was asked of it, such as the values of its root.
  bool wasTouched() const noexcept { return _wasTouched; }

 private:
  void answer();

  FileDescriptor _device;
  std::atomic<bool> _wasTouched = false;
  std::thread _thread;
};

}  // namespace tidemar::testing
