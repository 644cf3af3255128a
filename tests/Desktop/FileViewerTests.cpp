#include <QDBusArgument>
#include <QDBusUnixFileDescriptor>

#include "FakeDesktop.h"
#include "Platform/Desktop/FileViewer.h"

namespace tidemar::testing {
namespace {

using namespace Qt::StringLiterals;

class FileViewerTest : public BusTest {
 protected:
  void startFileManager(const QDBusConnection& connection) {
    fileManager.reset();
    fileManager.emplace(connection, u"org.freedesktop.FileManager1"_s,
                        u"/org/freedesktop/FileManager1"_s,
                        [](const QDBusMessage& call) { return call.createReply(); });
  }

  void startPortal() {
    portal.emplace(
        bus->connect(), u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s,
        [this](const QDBusMessage& call) {
          const auto item = qvariant_cast<QDBusUnixFileDescriptor>(call.arguments().value(1));
          const std::string link = "/proc/self/fd/" + std::to_string(item.fileDescriptor());
          shownByPortal.push_back(std::filesystem::read_symlink(link).string());
          return call.createReply();
        });
  }

  void show(const std::vector<std::string>& names) {
    std::vector<FileURL> items;
    for (const std::string& name : names)
      items.push_back(directory.url(name));
    QCoro::waitFor(FileViewer::showItems(bus->connect(), items));
  }

  QString uri(const char* encodedName) const {
    return u"file://"_s + QString::fromStdString(directory.path(encodedName));
  }

  std::optional<FakeService> fileManager;
  std::optional<FakeService> portal;
  std::vector<std::string> shownByPortal;
  OpenedURLs opened{"file"};
  TemporaryDirectory directory;
};

TEST_F(FileViewerTest, AllItemsGoToTheFileManagerInOneRequestByTheirBytes) {
  startFileManager(bus->connect());
  makeTree(directory.url(), R"(
"a b"
50%#1?
"line\nbreak \xff"
dangling -> nowhere
folder/
  Täst
)");
  show({"a b", "50%#1?", "line\nbreak \xff", "gone", "dangling", "folder/Täst"});
  show({});
  ASSERT_EQ(fileManager->calls.size(), 1U);
  const QDBusMessage& call = fileManager->calls[0];
  EXPECT_EQ(call.member(), u"ShowItems"_s);
  EXPECT_EQ(call.signature(), u"ass"_s);
  EXPECT_EQ(call.arguments().value(0).toStringList(),
            QStringList({uri("a%20b"), uri("50%25%231%3F"), uri("line%0Abreak%20%FF"),
                         uri("dangling"), uri("folder/T%C3%A4st")}));
  EXPECT_EQ(opened.urls, QStringList());
}

TEST_F(FileViewerTest, NautilusWhichOpensAWindowForEachItemIsGivenOneOfEachFolder) {
  startFileManager(bus->connect());
  makeTree(directory.url(), "a 1\nb 1\nfolder/\n  c 1\n  d 1\n");
  const auto shown = [this] {
    show({"a", "folder/c", "b", "folder/d"});
    return fileManager->calls.back().arguments().value(0).toStringList();
  };
  const QStringList all{uri("a"), uri("folder/c"), uri("b"), uri("folder/d")};
  EXPECT_EQ(shown(), all);
  QDBusConnection others = bus->connect();
  others.registerService(u"org.gnome.Nautilus"_s);
  EXPECT_EQ(shown(), all) << "it is running and isn't the one that answers";
  startFileManager(others);
  EXPECT_EQ(shown(), QStringList({uri("a"), uri("folder/c")}));
}

TEST_F(FileViewerTest, WhereAllItemsHaveGoneTheNearestFolderIsShown) {
  startFileManager(bus->connect());
  makeTree(directory.url(), "folder/");
  show({"folder/gone", "folder/gone too/deep down", "folder/gone"});
  ASSERT_EQ(fileManager->calls.size(), 1U);
  EXPECT_EQ(fileManager->calls[0].member(), u"ShowFolders"_s);
  EXPECT_EQ(fileManager->calls[0].arguments().value(0).toStringList(), QStringList(uri("folder")));

  fileManager.reset();
  show({"folder/gone"});
  EXPECT_EQ(opened.urls, QStringList(uri("folder")));
}

TEST_F(FileViewerTest, WithoutAFileManagerThatSelectsEachFolderIsOpenedOnce) {
  makeTree(directory.url(), R"(
one/
  first
  second
"two \xff"/
  link -> inner
  inner/
)");
  const std::vector<std::string> items = {"one/first", "one/second", "two \xff/inner"};
  const QStringList folders = {uri("one"), uri("two%20%FF")};

  show(items);
  EXPECT_EQ(opened.urls, folders) << "by its address, where there is no portal";

  opened.urls.clear();
  QCoro::waitFor(FileViewer::showItems(QDBusConnection(u"none"_s),
                                       {directory.url("one/first"), directory.url("one/second")}));
  EXPECT_EQ(opened.urls, QStringList(uri("one"))) << "where there isn't even a bus";

  opened.urls.clear();
  startPortal();
  show(items);
  EXPECT_EQ(shownByPortal,
            (std::vector{directory.path("one/first"), directory.path("two \xff/inner")}));
  EXPECT_EQ(portal->calls[0].signature(), u"sha{sv}"_s);
  EXPECT_EQ(opened.urls, QStringList());

  shownByPortal.clear();
  show({"two \xff/link"});
  EXPECT_TRUE(shownByPortal.empty()) << "the portal would show what the link leads to";
  EXPECT_EQ(opened.urls, QStringList(uri("two%20%FF")));
}

}  // namespace
}  // namespace tidemar::testing
