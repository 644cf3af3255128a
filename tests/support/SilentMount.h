#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar::testing {

/// Stands for a mount whose server is gone, on which every access would wait for ever: a FUSE file
/// system that refuses each request at once and remembers that there was one. A test that is held
/// up by it in earnest fails here instead of hanging.
class SilentMount {
 public:
  /// At an existing directory. `source` is the device that the table of mounts gives for it.
  explicit SilentMount(const FileURL& place, const std::string& source = "server:/");
  ~SilentMount();
  SilentMount(const SilentMount&) = delete;
  SilentMount& operator=(const SilentMount&) = delete;

  bool isMounted() const noexcept { return _reason.empty(); }
  const std::string& reason() const noexcept { return _reason; }

  /// Whether anything was asked of it, such as the values of its root.
  bool wasTouched() const noexcept { return _wasTouched; }

 private:
  void answer();

  FileURL _place;
  std::string _reason;
  FileDescriptor _device;
  std::atomic<bool> _wasTouched = false;
  std::thread _thread;
};

}  // namespace tidemar::testing
