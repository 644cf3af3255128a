#include "Platform/UserDefaults.h"

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Text.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

using nlohmann::json;

/// A directory of its own for the suite's files, in memory where that can be had.
class Directory {
 public:
  Directory() {
    std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp";
    pattern += "/tidemar-fuzz-XXXXXX";
    require(mkdtemp(pattern.data()) != nullptr, "there is a directory to work in");
    _path = pattern;
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  ~Directory() { std::filesystem::remove_all(_path); }

  FileURL url(const char* name) const { return FileURL(_path + "/" + name); }

 private:
  std::string _path;
};

void write(const FileURL& file, std::string_view content) {
  const FileDescriptor opened(
      open(file.path().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  require(opened && ::write(opened.get(), content.data(), content.size()) ==
                        static_cast<ssize_t>(content.size()),
          "the suite's file can be written");
}

}  // namespace

/// The input is the file of a suite.
void check(std::string_view input) {
  static const Directory directory;
  const FileURL file = directory.url("suite.json");
  const FileURL damaged = directory.url("suite.json.damaged");
  unlink(damaged.path().c_str());
  write(file, input);

  UserDefaults defaults(file);
  const auto folders = defaults.stringArray("folders");
  const std::string value(input.substr(0, 32));
  defaults.setString("fuzz", value);
  require(defaults.string("fuzz") == displayText(value), "a value that was set is there");

  json before = json::parse(input, nullptr, /*allow_exceptions=*/false);
  if (const auto kept = WholeFile::read(damaged)) {
    require(*kept == input, "a damaged file is kept as it was");
    require(!folders, "a damaged file reads as empty");
    constexpr std::size_t surelySmall = 64;
    require(!before.is_object() || input.size() > surelySmall || input.contains('\0'),
            "an ordinary object isn't damaged");
    return;
  }
  require(before.is_object() && !input.contains('\0'), "a suite is an object and nothing else");
  json after = json::parse(*WholeFile::read(file));
  before.erase("fuzz");
  after.erase("fuzz");
  require(after == before, "all other values stay, whatever they are");
}

}  // namespace tidemar::fuzz
