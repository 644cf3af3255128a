#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Files/Places/UserDirectories.h"

namespace tidemar {
namespace {

TEST(UserDirectories, AreReadFromTheLinesThatAShellWouldRead) {
  const struct {
    std::string line;
    const char* name = nullptr;  ///< Null where the line names no directory.
    const char* path = nullptr;
  } rows[] = {
      {R"(XDG_DESKTOP_DIR="$HOME/Schreibtisch")", "DESKTOP", "/home/u/Schreibtisch"},
      {R"(  XDG_MUSIC_DIR =  "/m"  )", "MUSIC", "/m"},
      {R"(XDG_MUSIC_DIR="/a\"b\\c")", "MUSIC", "/a\"b\\c"},
      {R"(XDG_TEMPLATES_DIR="$HOME/")"},  // Switched off.
      {R"(# XDG_MUSIC_DIR="/m")"},
      {R"(XDG_MUSIC_DIR="$HOMEWORK/m")"},
      {std::string("XDG_MUSIC_DIR=\"/m\0n\"", 20)},
      {R"(XDG_MUSIC_DIR="m")"},
      {R"(XDG_MUSIC_DIR=/m)"},
      {R"(XDG_MUSIC_DIR="/m)"},
      {R"(XDG_DIR="/m")"},
      {""},
  };
  for (const auto& row : rows) {
    std::vector<UserDirectory> expected;
    if (row.name != nullptr) expected.push_back({row.name, FileURL(row.path)});
    EXPECT_EQ(parseUserDirectories("\n" + row.line + "\n", FileURL("/home/u")), expected)
        << row.line;
  }
}

}  // namespace
}  // namespace tidemar
