#include "Tidemar/CommandLine.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(CommandLine, IsOneURLOrTheMarkOfALoginOrNothing) {
  const std::string longest(64 * 1024, 'a');
  const struct {
    const char* title;
    std::vector<std::string> arguments;
    std::optional<CommandLine> expected;  ///< None where the arguments are refused.
  } rows[] = {
      {"nothing", {}, CommandLine{}},
      {"a URL",
       {"tidemar://folder?path=/a\xff"},
       CommandLine{false, "tidemar://folder?path=/a\xff"}},
      {"a login", {"--launched-at-login"}, CommandLine{true, {}}},
      {"the bus", {"--launched-by-bus"}, CommandLine{true, {}}},
      {"the longest URL", {longest}, CommandLine{false, longest}},
      {"a URL too long", {longest + "a"}, {}},
      {"a login with a URL", {"--launched-at-login", "tidemar://folder?path=/a"}, {}},
      {"an argument that only begins alike", {"--launched-at-login=no"}, {}},
      {"an action", {"--setup"}, CommandLine{.action = "setup"}},
      {"an option", {"--quiet"}, {}},
      {"a dash", {"-"}, {}},
  };
  for (const auto& row : rows) {
    try {
      EXPECT_EQ(parseCommandLine(row.arguments), row.expected) << row.title;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(row.expected, std::nullopt) << row.title << ": " << error.what();
    }
  }
}

}  // namespace
}  // namespace tidemar::testing
