#pragma once

#include <compare>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tidemar {

/// Where a file lies: its path as the file system's own bytes, which need not be UTF-8 and are
/// never changed. Touches no file. An immutable value; copies share the path and are cheap to hand
/// to another thread.
///
/// Slashes at the end are dropped, except for the root. A default-made URL has the empty path,
/// which names nothing.
class FileURL {
 public:
  FileURL() = default;
  explicit FileURL(std::string path);

  const std::string& path() const noexcept;

  /// The bytes behind the last slash; "/" for the root, "" for the empty path. Lives as long as any
  /// copy of this URL.
  std::string_view lastPathComponent() const noexcept;

  FileURL appendingPathComponent(std::string_view component) const;

  /// The URL without its last path component; the root is its own parent.
  FileURL deletingLastPathComponent() const;

  friend bool operator==(const FileURL& a, const FileURL& b) noexcept {
    return a.path() == b.path();
  }
  friend std::strong_ordering operator<=>(const FileURL& a, const FileURL& b) noexcept {
    return a.path() <=> b.path();
  }

 private:
  std::shared_ptr<const std::string> _path;
};

}  // namespace tidemar

template <>
struct std::hash<tidemar::FileURL> {
  std::size_t operator()(const tidemar::FileURL& url) const noexcept {
    return std::hash<std::string>{}(url.path());
  }
};
