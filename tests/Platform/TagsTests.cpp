#include <sys/xattr.h>

#include "support/Testing.h"

namespace tidemar::testing {
namespace {

constexpr const char* attribute = "user.xdg.tags";

void setAttribute(const FileURL& url, std::string_view value) {
  ASSERT_EQ(lsetxattr(url.path().c_str(), attribute, value.data(), value.size(), 0), 0);
}

std::string attributeOf(const FileURL& url) {
  std::string value(65536, '\0');
  const ssize_t size = lgetxattr(url.path().c_str(), attribute, value.data(), value.size());
  if (size < 0) return errno == ENODATA ? "(none)" : "(failed)";
  value.resize(static_cast<std::size_t>(size));
  return value;
}

TEST(Tags, AreThePartsBetweenTheCommasByteForByte) {
  const std::pair<std::string, std::vector<std::string>> rows[] = {
      {"Tidemar: Temporary", {"Tidemar: Temporary"}},
      {", Red ,,a\xFF/b,", {"", " Red ", "", "a\xFF/b", ""}},
      {std::string("a\0b,c", 5), {std::string("a\0b", 3), "c"}},
      {std::string(2000, 'x') + ",y", {std::string(2000, 'x'), "y"}},
  };
  const TemporaryDirectory directory;
  for (const auto& [value, tags] : rows) {
    setAttribute(directory.url(), value);
    EXPECT_EQ(readTagNames(directory.url()), tags);
    setAttribute(directory.url(), "other");
    writeTagNames(directory.url(), tags);
    EXPECT_EQ(attributeOf(directory.url()), value);
  }
}

TEST(Tags, ThatAreMissingReadAsNoneAndNoneLeaveNoAttribute) {
  const TemporaryDirectory directory;
  EXPECT_TRUE(readTagNames(directory.url()).empty()) << "no attribute";
  setAttribute(directory.url(), "");
  EXPECT_TRUE(readTagNames(directory.url()).empty()) << "an empty attribute";
  setAttribute(directory.url(), "a,b");
  withFailingSystemCall(SYS_fgetxattr, ENOTSUP,
                        [&] { EXPECT_TRUE(readTagNames(directory.url()).empty()); });
  for (int i = 0; i < 2; ++i) {
    writeTagNames(directory.url(), {});
    EXPECT_EQ(attributeOf(directory.url()), "(none)");
  }
  EXPECT_THROW(readTagNames(FileURL(directory.path() + std::string("\0x", 2))), PlatformError);
}

TEST(Tags, StayAsTheyWereWhereTheDiskRefusesNewOnesAndSaysWhatToDo) {
  const TemporaryDirectory directory;
  setAttribute(directory.url(), "old");
  for (const auto& [code, advice] : {std::pair{ENOTSUP, "another drive"},
                                     {EPERM, "Unlock"},
                                     {EACCES, "permissions"},
                                     {EROFS, "writable"},
                                     {ENOSPC, "Make room"},
                                     {E2BIG, "Take a tag off"}}) {
    withFailingSystemCall(SYS_fsetxattr, code, [&] {
      try {
        writeTagNames(directory.url(), std::vector<std::string>{"new"});
        ADD_FAILURE() << advice;
      } catch (const PlatformError& error) {
        EXPECT_EQ(error.code(), code);
        EXPECT_NE(std::string(error.what()).find(advice), std::string::npos) << error.what();
      }
    });
    EXPECT_EQ(attributeOf(directory.url()), "old");
  }
}

}  // namespace
}  // namespace tidemar::testing
