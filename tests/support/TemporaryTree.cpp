#include "support/TemporaryTree.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidemar::testing {
namespace {

void check(bool succeeded, const std::string& what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

/// Takes a name, plain or in quotes, off the front of a line.
std::string takeName(std::string_view& line) {
  std::string name;
  if (!line.starts_with('"')) {
    const std::size_t end = std::min(line.find(' '), line.size());
    name = line.substr(0, end);
    line.remove_prefix(end);
    return name;
  }
  std::size_t i = 1;
  for (; i < line.size() && line[i] != '"'; ++i) {
    if (line[i] != '\\') {
      name += line[i];
      continue;
    }
    switch (line[++i]) {
      case 'n':
        name += '\n';
        break;
      case 't':
        name += '\t';
        break;
      case 'x': {
        unsigned value = 0;
        std::from_chars(line.data() + i + 1, line.data() + i + 3, value, 16);
        name += static_cast<char>(value);
        i += 2;
        break;
      }
      default:
        name += line[i];
    }
  }
  line.remove_prefix(std::min(i + 1, line.size()));
  return name;
}

void makeEntry(const FileURL& url, std::string_view rest) {
  if (rest.starts_with("-> ")) {
    check(symlink(std::string(rest.substr(3)).c_str(), url.path().c_str()) == 0,
          "symlink " + url.path());
  } else if (rest == "|") {
    check(mkfifo(url.path().c_str(), 0600) == 0, "mkfifo " + url.path());
  } else {
    std::size_t size = 0;
    std::from_chars(rest.data(), rest.data() + rest.size(), size);
    writeFile(url, std::string(size, 'x'));
  }
}

}  // namespace

TemporaryDirectory::TemporaryDirectory(std::string_view parent) {
  std::string pattern =
      parent.empty() ? std::filesystem::temp_directory_path().string() : std::string(parent);
  pattern = std::filesystem::canonical(pattern).string() + "/tidemar-test-XXXXXX";
  check(mkdtemp(pattern.data()) != nullptr, "mkdtemp " + pattern);
  _url = FileURL(pattern);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(_url.path(), ignored);
}

std::string TemporaryDirectory::path(std::string_view relative) const {
  return relative.empty() ? _url.path() : _url.path() + "/" + std::string(relative);
}

void makeTree(const FileURL& root, std::string_view drawing) {
  std::vector<FileURL> parents = {root};
  std::istringstream lines{std::string(drawing)};
  std::size_t margin = std::string::npos;
  for (std::string text; std::getline(lines, text);) {
    const std::size_t indentation = text.find_first_not_of(' ');
    if (indentation == std::string::npos) continue;
    if (margin == std::string::npos) margin = indentation;
    const std::size_t level = (indentation - margin) / 2;
    if (indentation < margin || level >= parents.size())
      throw std::logic_error("bad indentation: " + text);
    parents.resize(level + 1);

    std::string_view rest = std::string_view(text).substr(indentation);
    std::string name = takeName(rest);
    const bool isDirectory = name.ends_with('/') || rest == "/";
    if (name.ends_with('/')) name.pop_back();
    if (rest.starts_with(' ')) rest.remove_prefix(rest.find_first_not_of(' '));
    const FileURL url = parents.back().appendingPathComponent(name);
    if (isDirectory) {
      check(mkdir(url.path().c_str(), 0700) == 0, "mkdir " + url.path());
      parents.push_back(url);
    } else {
      makeEntry(url, rest);
    }
  }
}

void setModificationTime(const FileURL& url, double secondsSince1970) {
  const double whole = std::floor(secondsSince1970);
  timespec time{static_cast<time_t>(whole), static_cast<long>((secondsSince1970 - whole) * 1e9)};
  const timespec times[2] = {time, time};
  check(utimensat(AT_FDCWD, url.path().c_str(), times, AT_SYMLINK_NOFOLLOW) == 0,
        "utimensat " + url.path());
}

void writeFile(const FileURL& url, std::string_view content) {
  std::ofstream file(url.path(), std::ios::binary);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  file.close();
  check(!file.fail(), "write " + url.path());
}

std::string readFile(const FileURL& url) {
  std::ifstream file(url.path(), std::ios::binary);
  check(file.is_open(), "read " + url.path());
  return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const FileURL& url) {
  struct stat values {};
  return lstat(url.path().c_str(), &values) == 0;
}

}  // namespace tidemar::testing
