#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Files/Places/UserDirectories.h"

namespace tidemar {
namespace {

TEST(UserDirectories, AreReadFromTheLinesThatAShellWouldRead) {
  const struct {
    const char* title;
    std::string line;
    std::vector<UserDirectory> expected;
  } rows[] = {
      {"below the home",
       R"(XDG_DESKTOP_DIR="$HOME/Schreibtisch")",
       {{"DESKTOP", FileURL("/home/u/Schreibtisch")}}},
      {"absolute", R"(XDG_MUSIC_DIR="/data/Music")", {{"MUSIC", FileURL("/data/Music")}}},
      {"with blanks around", "  XDG_MUSIC_DIR =  \"/m\"  ", {{"MUSIC", FileURL("/m")}}},
      {"with quotes and backslashes in it",
       R"(XDG_MUSIC_DIR="/a\"b\\c")",
       {{"MUSIC", FileURL("/a\"b\\c")}}},
      {"switched off", R"(XDG_TEMPLATES_DIR="$HOME/")", {}},
      {"a comment", R"(# XDG_MUSIC_DIR="/m")", {}},
      {"another variable", R"(XDG_MUSIC_DIR="$OTHER/m")", {}},
      {"a variable whose name only begins alike", R"(XDG_MUSIC_DIR="$HOMEWORK/m")", {}},
      {"with a NUL", std::string("XDG_MUSIC_DIR=\"/m\0n\"", 20), {}},
      {"relative", R"(XDG_MUSIC_DIR="m")", {}},
      {"without quotes", "XDG_MUSIC_DIR=/m", {}},
      {"without an end", R"(XDG_MUSIC_DIR="/m)", {}},
      {"without a name", R"(XDG_DIR="/m")", {}},
      {"nothing at all", "", {}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(parseUserDirectories("\n" + row.line + "\n", FileURL("/home/u")), row.expected)
        << row.title;
  }
}

}  // namespace
}  // namespace tidemar
