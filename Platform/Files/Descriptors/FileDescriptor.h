#pragma once

#include <utility>

#include <unistd.h>

namespace tidemar {

/// Owns one open descriptor and closes it. Moves, never copies.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) noexcept : _descriptor(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : _descriptor(std::exchange(other._descriptor, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      close();
      _descriptor = std::exchange(other._descriptor, -1);
    }
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { close(); }

  /// The descriptor, -1 if none is held. Stays owned.
  int get() const noexcept { return _descriptor; }
  explicit operator bool() const noexcept { return _descriptor >= 0; }

  /// Closes now; errors of the close are dropped.
  void close() noexcept {
    if (_descriptor >= 0) ::close(std::exchange(_descriptor, -1));
  }

 private:
  int _descriptor = -1;
};

}  // namespace tidemar
