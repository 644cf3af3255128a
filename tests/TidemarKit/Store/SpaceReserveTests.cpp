#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarKit/Store/LedgerWorld.h"
#include "TidemarKit/Store/SpaceReserve.h"

namespace tidemar::testing {
namespace {

using Type = TestFileSystem::Type;

/// Whether this many bytes could be added to a file and reached the disk.
bool append(const FileURL& url, std::size_t count) {
  const FileDescriptor file(
      open(url.path().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  const std::string bytes(count, 'x');
  return write(file.get(), bytes.data(), count) == static_cast<ssize_t>(count) &&
         fsync(file.get()) == 0;
}

/// A database on a small disk that can be filled to the last byte.
class FullDisk : public ::testing::TestWithParam<Type> {
 protected:
  void SetUp() override {
    if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
    mkdir(disk.url("Tidemar").path().c_str(), 0700);
    store.emplace(path);
    ledger.emplace(*store);
    folder = store->insert(folderAt("/f"));
    ledger->settle();
    ASSERT_TRUE(exists(reserve));
    ASSERT_TRUE(append(disk.url("item"), std::size_t{36} << 20U));
  }

  void fill() const {
    for (std::size_t count = std::size_t{1} << 20U; count > 0; count /= 4)
      while (append(disk.url("other"), count)) {
      }
  }

  JournalEntry row(const std::string& name, Disposal disposal) const {
    JournalEntry entry = entryOf(folder, name);
    entry.disposal = disposal;
    return entry;
  }

  Rows names() const { return runSQL(path, "SELECT name FROM journalEntry ORDER BY id"); }

  TestFileSystem disk{GetParam(), GetParam() == Type::tmpfs ? "size=64m" : ""};
  FileURL reserve = disk.url("Tidemar/tidemar.reserve");
  std::string path = disk.url("Tidemar/tidemar.sqlite").path();
  std::optional<Store> store;
  std::optional<RemovalLedger> ledger;
  Folder folder;
};

TEST_P(FullDisk, aDeletionHasRoomForItsRowAndTheBinWhichFreesNoneDoesNotTakeIt) {
  fill();
  EXPECT_THROW(ledger->prepare(row("binned", Disposal::bin)), DatabaseError);
  EXPECT_TRUE(exists(reserve));
  ledger->prepare(row("deleted", Disposal::delete_));
  EXPECT_FALSE(exists(reserve));
  ledger->record(row("deleted", Disposal::delete_));
  EXPECT_EQ(names(), Rows{"deleted"});

  fill();
  EXPECT_THROW(ledger->prepare(row("next", Disposal::delete_)), DatabaseError);
  ledger->settle();
  EXPECT_FALSE(exists(reserve)) << "the last of the disk is not for us";
  unlink(disk.url("item").path().c_str());
  sync();
  ledger->prepare(row("next", Disposal::delete_));
  EXPECT_TRUE(exists(reserve));
}

TEST_P(FullDisk, whatWentBeforeTheDiskWasFullGetsItsRowToo) {
  fill();
  ledger->record(row("a", Disposal::bin));
  EXPECT_FALSE(exists(reserve));
  fill();
  EXPECT_THROW(ledger->record(row("b", Disposal::bin)), DatabaseError);
  EXPECT_FALSE(ledger->isSettled());
  unlink(disk.url("item").path().c_str());
  sync();
  ledger->settle();
  EXPECT_EQ(names(), (Rows{"a", "b"}));
  EXPECT_EQ(runSQL(path, "PRAGMA integrity_check"), Rows{"ok"});
  EXPECT_TRUE(exists(reserve));
}

TEST(SpaceReserve, aDiskThatTakesNoMoreFilesIsFullToo) {
  const TestFileSystem disk(Type::tmpfs, "size=64m,nr_inodes=8");
  if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
  Store store(disk.url("tidemar.sqlite").path());
  RemovalLedger ledger(store);
  ledger.settle();
  JournalEntry entry = entryOf(store.insert(folderAt("/f")), "a");
  entry.disposal = Disposal::delete_;
  for (int i = 0; append(disk.url(std::to_string(i)), 1); ++i) {
  }
  ledger.prepare(entry);
  ledger.record(entry);
  EXPECT_FALSE(exists(disk.url("tidemar.reserve")));
}

TEST(SpaceReserve, whatIsNotOursIsNeitherReplacedNorGivenUp) {
  const TemporaryDirectory directory;
  const FileURL file = directory.url("tidemar.reserve");
  const std::string content(SpaceReserve::size, 'x');
  writeFile(directory.url("precious"), content);
  // A link, and a second name of a file.
  for (const auto plant : {symlink, link}) {
    ASSERT_EQ(plant(directory.path("precious").c_str(), file.path().c_str()), 0);
    SpaceReserve reserve(directory.url());
    reserve.keep();
    EXPECT_FALSE(reserve.giveUp());
    EXPECT_TRUE(exists(file));
    EXPECT_EQ(readFile(directory.url("precious")), content);
    unlink(file.path().c_str());
  }
}

INSTANTIATE_TEST_SUITE_P(SpaceReserve, FullDisk,
                         ::testing::Values(Type::ext4, Type::xfs, Type::btrfs, Type::tmpfs),
                         [](const auto& type) { return nameOf(type.param); });

}  // namespace
}  // namespace tidemar::testing
