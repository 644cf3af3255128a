#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/Store.h"
#include "support/Records.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace tidemar::testing;

/// All of them where TIDEMAR_TORTURE is "full", else a part for every day.
int damageCount() {
  const char* torture = std::getenv("TIDEMAR_TORTURE");
  return torture != nullptr && std::string_view(torture) == "full" ? 1000 : 60;
}

/// Some flipped bits, a lost end, or a block of other content, chosen by the seed.
std::string damaged(std::string content, unsigned seed) {
  std::mt19937 random(seed);
  const auto below = [&](std::size_t bound) { return random() % bound; };
  switch (seed % 4) {
    case 0:
      content.resize(1 + below(content.size() - 1));
      break;
    case 1:
      content.replace(below(content.size() / 512) * 512, 512, 512, static_cast<char>(random()));
      break;
    default:
      // Half of them near the beginning, where the header and the schema are.
      for (std::size_t flips = 1 + below(20); flips > 0; --flips)
        content[below(seed % 4 == 2 ? 1024 : content.size())] ^= static_cast<char>(1U << below(8));
  }
  return content;
}

TEST(DamagedDatabase, isReadOrRefusedAndNeverChanged) {
  const TemporaryDirectory directory;
  const FileURL file = directory.url("tidemar.sqlite");
  Folder folder;
  {
    Store store(directory.path("whole"));
    for (int i = 0; i < 20; ++i)
      folder = store.insert(folderAt("/f" + std::to_string(i)));
    for (int i = 0; i < 120; ++i)
      store.insert(entryOf(folder, "item " + std::to_string(i), i));
  }
  const std::string whole = readFile(directory.url("whole"));
  int openedCount = 0;
  int readCount = 0;
  for (int seed = 0; seed < damageCount(); ++seed) {
    const std::string content = damaged(whole, static_cast<unsigned>(seed));
    writeFile(file, content);
    try {
      Store store(file.path());
      ++openedCount;
      store.journalOfFolder(*folder.id);
      store.journalSince(Date{60});
      store.tryInsert(entryOf(folder, "x"));
      store.folders();
      ++readCount;
    } catch (const DatabaseError&) {
      // Refused: as good an end as any other.
    }
    EXPECT_EQ(readFile(file), content) << seed;
  }
  // Neither all nor none, or the damage is not worth its name.
  EXPECT_GT(readCount, damageCount() / 20);
  EXPECT_GT(openedCount, readCount);
  EXPECT_LT(openedCount, damageCount());
  RecordProperty("opened", openedCount);
  RecordProperty("read", readCount);
}

}  // namespace
}  // namespace tidemar
