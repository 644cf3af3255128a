#include "support/FileExpectations.h"

#include <filesystem>
#include <system_error>

#include <gtest/gtest.h>

#include "Platform/PlatformError.h"
#include "support/TemporaryTree.h"

namespace tidemar::testing {

std::set<std::string> namesIn(const FileURL& directory) {
  std::set<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory.path(), error)) {
    names.insert(entry.path().filename().string());
  }
  return names;
}

int codeOf(const std::function<void()>& call) {
  try {
    call();
    return 0;
  } catch (const PlatformError& error) {
    EXPECT_TRUE(std::string(error.what()).starts_with("Couldn't ")) << error.what();
    return error.code();
  }
}

std::string pathIn(const FileURL& record) {
  const std::string text = readFile(record);
  const std::size_t start = text.find("\nPath=") + 6;
  return text.substr(start, text.find('\n', start) - start);
}

}  // namespace tidemar::testing
