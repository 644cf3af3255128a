#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "Platform/Files/Trash/TrashRecord.h"

namespace tidemar {
namespace {

using Path = std::optional<std::string>;

TEST(TrashRecord, HoldsThePathThatWasWritten) {
  for (const std::string path :
       {"/home/u/a b%25#?\n[x]", "relative/caf\xE9", "..a/b../...", "\x01\xFF", " /", "Path="}) {
    for (const std::time_t date : {std::time_t{0}, std::time_t{1763763095}}) {
      const std::string record = trashRecordText(path, date);
      EXPECT_EQ(pathInTrashRecord(record), path);
      for (std::size_t size = 0; size < record.size(); ++size) {
        EXPECT_EQ(pathInTrashRecord(record.substr(0, size)), Path()) << "cut short at " << size;
      }
    }
  }
}

TEST(TrashRecord, HoldsAPathAloneWhereItIsWellFormed) {
  const std::string date = "DeletionDate=2025-11-21T22:11:35\n";
  const struct {
    const char* title;
    std::string text;
    Path path;
  } rows[] = {
      {"the date first", "[Trash Info]\n" + date + "Path=/a\n", "/a"},
      {"the first of two", "[Trash Info]\nPath=/a\nPath=/b\n" + date, "/a"},
      {"other lines and groups",
       "[Trash Info]\n# Path\nXPath=/b\n\n Path=/c\nPath=/a\n" + date + "[Next]\nPath=/b\n", "/a"},
      {"small hexadecimal digits", "[Trash Info]\nPath=/%c3%a9\n" + date, "/\xC3\xA9"},
      {"characters that need no escape", "[Trash Info]\nPath=/a!$&'()*+,:;=@\n" + date,
       "/a!$&'()*+,:;=@"},
      {"nothing at all", "", {}},
      {"another group first", "[Other]\n[Trash Info]\nPath=/a\n" + date, {}},
      {"a longer first line", "[Trash Info] \nPath=/a\n" + date, {}},
      {"line ends of another system", "[Trash Info]\r\nPath=/a\r\n" + date, {}},
      {"the path in the next group", "[Trash Info]\n" + date + "[Next]\nPath=/a\n", {}},
      {"the date in the next group", "[Trash Info]\nPath=/a\n[Next]\n" + date, {}},
      {"no date", "[Trash Info]\nPath=/a\n", {}},
      {"no time of day", "[Trash Info]\nPath=/a\nDeletionDate=2025-11-21\n", {}},
      {"an empty path", "[Trash Info]\nPath=\n" + date, {}},
      {"half an escape", "[Trash Info]\nPath=/a%2\n" + date, {}},
      {"a blank that isn't escaped", "[Trash Info]\nPath=/a b\n" + date, {}},
      {"a byte that isn't escaped", "[Trash Info]\nPath=/caf\xE9\n" + date, {}},
      {"a NUL", "[Trash Info]\nPath=/a%00b\n" + date, {}},
      {"up again", "[Trash Info]\nPath=a/../../b\n" + date, {}},
      {"up again, escaped", "[Trash Info]\nPath=/a/%2E%2e\n" + date, {}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(pathInTrashRecord(row.text), row.path) << row.title;
}

}  // namespace
}  // namespace tidemar
