#include <array>
#include <cstdlib>
#include <limits>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Logger.h"

namespace tidemar {
namespace {

constexpr auto hidden = PrivateValues::hidden;
constexpr auto shown = PrivateValues::shown;

TEST(LogMessage, isOneLineWhateverItsValuesHold) {
  const struct {
    const char* name;
    std::string_view format;
    std::vector<LogArgument> arguments;
    PrivateValues privateValues;
    const char* message;
  } rows[] = {
      {"two numbers", "Removed %ld items, %ld failed", {3, 0}, hidden, "Removed 3 items, 0 failed"},
      {"the widest number",
       "%lld",
       {std::numeric_limits<std::int64_t>::min()},
       hidden,
       "-9223372036854775808"},
      {"a private value is hidden and the value behind it keeps its place",
       "Couldn't remove %{private}s: %{public}s",
       {"/home/a", "busy"},
       hidden,
       "Couldn't remove <private>: busy"},
      {"a private value is shown where that is asked for",
       "Couldn't remove %{private}s: %{public}s",
       {"/home/a", "busy"},
       shown,
       "Couldn't remove /home/a: busy"},
      {"a value that looks like a place stays a value",
       "%{public}s: %{private}s",
       {"%{public}s%ld", "b"},
       hidden,
       "%{public}s%ld: <private>"},
      {"a percent sign that begins no place",
       "100% %d %{secret}s %%ld%",
       {1},
       hidden,
       "100% %d %{secret}s %1%"},
      {"a forged line",
       "%{public}s!",
       {"a\nfault: b\r\t\x1b[2J\x7f"},
       hidden,
       "a\\nfault: b\\x0d\\x09\\x1b[2J\\x7f!"},
      {"control characters of two bytes",
       "%{public}s",
       {"a\xc2\x9b"
        "2J\xc2\xa0\xc3\xa9"},
       hidden,
       "a\\x9b2J\xc2\xa0\xc3\xa9"},
      {"bytes that aren't text", "%{public}s", {"a\xff\xc2"}, hidden, "a\xef\xbf\xbd\xef\xbf\xbd"},
      {"a NUL", "%{public}s", {std::string_view("a\0b", 3)}, hidden, "a\\x00b"},
      {"missing values", "%{public}s %ld %{private}s", {"a"}, hidden, "a <missing> <private>"},
      {"values of the other type", "%ld %{public}s", {"a", 1}, hidden, "a 1"},
      {"no places and no values", "Started", {}, hidden, "Started"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(logMessage(row.format, row.arguments, row.privateValues), row.message) << row.name;
}

TEST(Logger, writesWholeLinesAndNothingPrivateWhereNoTerminalReadsThem) {
  if (access("/run/systemd/journal/socket", W_OK) == 0) {
    GTEST_SKIP() << "this machine has a journal, which takes the lines";
  }
  const Logger logger("app.quernly.tidemar", "engine");
  constexpr int threadCount = 4;
  constexpr int linesPerThread = 25;
  ::testing::internal::CaptureStderr();
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
      threads.emplace_back([&] {
        const std::string path = "/home/canary\n";
        for (unsigned i = 0; i < linesPerThread; ++i)
          logger.log(LogLevel::error, "Couldn't remove %{private}s: %{public}s (%lld)", path,
                     "busy\n", std::size_t{7});
      });
    }
  }
  const std::string written = ::testing::internal::GetCapturedStderr();
  std::string expected;
  for (int i = 0; i < threadCount * linesPerThread; ++i)
    expected += "app.quernly.tidemar engine error: Couldn't remove <private>: busy\\n (7)\n";
  EXPECT_EQ(written, expected);
}

TEST(Logger, showsPrivateValuesOnATerminal) {
  const FileDescriptor terminal(posix_openpt(O_RDWR | O_NOCTTY));
  ASSERT_TRUE(terminal && grantpt(terminal.get()) == 0 && unlockpt(terminal.get()) == 0);
  const FileDescriptor screen(open(ptsname(terminal.get()), O_RDWR | O_NOCTTY));
  ASSERT_TRUE(screen);
  const FileDescriptor standardError(dup(STDERR_FILENO));
  dup2(screen.get(), STDERR_FILENO);
  Logger("app.quernly.tidemar", "engine")
      .log(LogLevel::fault, "Couldn't remove %{private}s", "/home/a\x1b[2J");
  dup2(standardError.get(), STDERR_FILENO);

  std::array<char, 200> line{};
  ASSERT_GT(read(terminal.get(), line.data(), line.size() - 1), 0);
  EXPECT_STREQ(line.data(),
               "app.quernly.tidemar engine fault: Couldn't remove /home/a\\x1b[2J\r\n");
}

}  // namespace
}  // namespace tidemar
