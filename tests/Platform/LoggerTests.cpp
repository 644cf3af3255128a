#include "Platform/Logger.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(LogMessage, isOneLineWhateverItsValuesHold) {
  const std::tuple<std::string_view, std::vector<LogArgument>, const char*> rows[] = {
      {"Removed %ld items, %lld failed",
       {3, INT64_MIN},
       "Removed 3 items, -9223372036854775808 failed"},
      {"Can't %{private}s: %{public}s", {"/home/a", "busy"}, "Can't <private>: busy"},
      {"%{public}s: %{private}s", {"%{public}s%ld", "b"}, "%{public}s%ld: <private>"},
      {"100% %d %{secret}s %%ld%", {1}, "100% %d %{secret}s %1%"},
      {"%{public}s!", {"a\nfault: b\r\t\x1b[2J\x7f"}, "a\\nfault: b\\x0d\\x09\\x1b[2J\\x7f!"},
      {"%{public}s", {"\xc2\x9bJ\xc2\xa0\xc3\xa9"}, "\\x9bJ\xc2\xa0\xc3\xa9"},
      {"%{public}s", {"a\xff\xc2"}, "a\xef\xbf\xbd\xef\xbf\xbd"},
      {"%{public}s", {std::string_view("a\0b", 3)}, "a\\x00b"},
      {"%{public}s %ld %{private}s", {"a"}, "a <missing> <private>"},
      {"%ld %{public}s", {"a", 1}, "a 1"},
  };
  for (const auto& [format, arguments, message] : rows)
    EXPECT_EQ(logMessage(format, arguments, PrivateValues::hidden), message);
  const std::vector<LogArgument> home = {"/home/a"};
  EXPECT_EQ(logMessage("Can't %{private}s", home, PrivateValues::shown), "Can't /home/a");
}

TEST(Logger, writesWholeLinesAndNothingPrivateWhereNoTerminalReadsThem) {
  if (access("/run/systemd/journal/socket", W_OK) == 0) {
    GTEST_SKIP() << "this machine has a journal, which takes the lines";
  }
  const Logger logger("app.quernly.tidemar", "engine");
  ::testing::internal::CaptureStderr();
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread) {
      threads.emplace_back([&] {
        const std::string path = "/home/canary\n";
        for (int i = 0; i < 25; ++i)
          logger.log(LogLevel::error, "Couldn't remove %{private}s: %{public}s (%lld)", path,
                     "busy\n", std::size_t{7});
      });
    }
  }
  const std::string written = ::testing::internal::GetCapturedStderr();
  std::string expected;
  for (int i = 0; i < 4 * 25; ++i)
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
}  // namespace tidemar::testing
