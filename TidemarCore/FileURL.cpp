#include "TidemarCore/FileURL.h"

#include <utility>

namespace tidemar {

FileURL::FileURL(std::string path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  _path = std::make_shared<const std::string>(std::move(path));
}

const std::string& FileURL::path() const noexcept {
  static const std::string empty;
  return _path ? *_path : empty;
}

std::string_view FileURL::lastPathComponent() const noexcept {
  const std::string_view whole = path();
  if (whole == "/") return whole;
  return whole.substr(whole.rfind('/') + 1);
}

FileURL FileURL::appendingPathComponent(std::string_view component) const {
  std::string result;
  result.reserve(path().size() + 1 + component.size());
  result += path();
  if (result.empty() || result.back() != '/') result += '/';
  result += component;
  return FileURL(std::move(result));
}

FileURL FileURL::deletingLastPathComponent() const {
  const std::size_t slash = path().rfind('/');
  if (slash == std::string::npos) return {};
  return FileURL(path().substr(0, slash == 0 ? 1 : slash));
}

}  // namespace tidemar
