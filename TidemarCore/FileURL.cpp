#include "TidemarCore/FileURL.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tidemar {
namespace {

constexpr std::size_t smallestBlock = 256;
constexpr std::size_t largestBlock = 64 * 1024;

}  // namespace

/// Bytes that URLs point into: a whole path, or names of entries of one folder.
struct FileURL::Block {
  std::atomic<std::size_t> owners = 1;
  std::string folder;  ///< Stands before each text; empty for a whole path.
  std::unique_ptr<char[]> text;
};

FileURL::FileURL(std::string path) {
  while (path.size() > 1 && path.back() == '/')
    path.pop_back();
  if (path.empty()) return;
  if (path.size() > UINT32_MAX) throw std::length_error("FileURL");
  _size = static_cast<std::uint32_t>(path.size());
  _block = makeBlock({}, path.size()).release();
  path.copy(_block->text.get(), path.size());
}

FileURL::FileURL(const FileURL& other) noexcept
    : _block(other._block), _start(other._start), _size(other._size) {
  if (_block != nullptr) _block->owners.fetch_add(1, std::memory_order_relaxed);
}

FileURL::FileURL(FileURL&& other) noexcept
    : _block(std::exchange(other._block, nullptr)),
      _start(std::exchange(other._start, 0)),
      _size(std::exchange(other._size, 0)) {}

FileURL& FileURL::operator=(FileURL other) noexcept {
  std::swap(_block, other._block);
  std::swap(_start, other._start);
  std::swap(_size, other._size);
  return *this;
}

FileURL::~FileURL() {
  if (_block != nullptr && _block->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
    delete _block;
}

std::string_view FileURL::folder() const noexcept {
  return _block != nullptr ? std::string_view(_block->folder) : std::string_view();
}

std::string_view FileURL::text() const noexcept {
  return _block != nullptr ? std::string_view(_block->text.get() + _start, _size)
                           : std::string_view();
}

std::string FileURL::path() const {
  std::string result;
  result.reserve(folder().size() + _size);
  result += folder();
  result += text();
  return result;
}

std::string_view FileURL::lastPathComponent() const noexcept {
  const std::string_view whole = text();
  // The name of an entry, whose bytes nobody needs to look at.
  if (!folder().empty()) return whole;
  return whole == "/" ? whole : whole.substr(whole.rfind('/') + 1);
}

FileURL FileURL::appendingPathComponent(std::string_view component) const {
  std::string result = path();
  if (result.empty() || result.back() != '/') result += '/';
  result += component;
  return FileURL(std::move(result));
}

FileURL FileURL::deletingLastPathComponent() const {
  std::string whole = path();
  const std::size_t slash = whole.rfind('/');
  if (slash == std::string::npos) return {};
  whole.resize(slash == 0 ? 1 : slash);
  return FileURL(std::move(whole));
}

bool operator==(const FileURL& a, const FileURL& b) {
  if (a.folder() == b.folder()) return a.text() == b.text();
  return a.path() == b.path();
}

std::unique_ptr<FileURL::Block> FileURL::makeBlock(std::string folder, std::size_t size) {
  auto block = std::make_unique<Block>();
  block->folder = std::move(folder);
  block->text = std::make_unique_for_overwrite<char[]>(size);
  return block;
}

EntryURLs::EntryURLs(const FileURL& folder) : _folder(folder.path()) {
  if (!_folder.ends_with('/')) _folder += '/';
}

FileURL EntryURLs::make(std::string_view name) {
  std::size_t start = std::size_t{_last._start} + _last._size;
  if (_last._block == nullptr || _blockSize - start < name.size()) {
    _blockSize = std::max(std::clamp(2 * _blockSize, smallestBlock, largestBlock), name.size());
    _last = {};
    _last._block = FileURL::makeBlock(_folder, _blockSize).release();
    start = 0;
  }
  name.copy(_last._block->text.get() + start, name.size());
  _last._start = static_cast<std::uint32_t>(start);
  _last._size = static_cast<std::uint32_t>(name.size());
  return _last;
}

bool isEntryName(std::string_view name) noexcept {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == name.npos;
}

}  // namespace tidemar
