#include <QDBusObjectPath>
#include <QEventLoop>
#include <filesystem>
#include <optional>

#include <gtest/gtest.h>

#include "FakeService.h"
#include "OpenedURLs.h"
#include "Platform/Desktop/Alerts.h"
#include "Platform/Desktop/PackageOwnership.h"
#include "Platform/Desktop/PackageUpdates.h"
#include "PrivateBus.h"
#include "support/ScopedEnvironment.h"

namespace tidemar {
namespace {

using namespace testing;

class WrittenAlerts : public Alerts {
 public:
  void run(const Alert& alert) override { shown.push_back(alert); }
  std::vector<Alert> shown;
};

const QString packageKitName = QStringLiteral("org.freedesktop.PackageKit");
const QString packageKitPath = QStringLiteral("/org/freedesktop/PackageKit");

class PackageUpdatesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Helper::exists("dbus-daemon")) GTEST_SKIP() << "needs dbus-daemon";
    bus.emplace();
  }

  enum class Trouble { fails, isRefused, endsTheService };

  /// A PackageKit that has these updates and gets into trouble by this job.
  void startPackageKit() {
    packageKit.emplace(bus->connect(), packageKitName, packageKitPath,
                       [this](const QDBusMessage& call) { return answer(call); });
  }

  std::optional<QVariantList> answer(const QDBusMessage& call) {
    if (call.member() == QStringLiteral("CreateTransaction")) {
      const QString path = packageKitPath + QStringLiteral("/%1_job").arg(++transactions);
      return QVariantList{QVariant::fromValue(QDBusObjectPath(path))};
    }
    jobs << call.member();
    const bool isTroubled = call.member() == troubledJob;
    if (isTroubled && trouble == Trouble::isRefused) return std::nullopt;
    if (isTroubled && trouble == Trouble::endsTheService) {
      packageKit->leave();
      return QVariantList();
    }
    if (isTroubled) tell(call, "ErrorCode", {2U, QStringLiteral("There is no network.")});
    if (call.member() == QStringLiteral("GetUpdates")) {
      for (const QString& update : updates)
        tell(call, "Package", {12U, update, QStringLiteral("a summary")});
    }
    tell(call, "Finished", {isTroubled ? 2U : 1U, 100U});
    return QVariantList();
  }

  void tell(const QDBusMessage& call, const char* signal, const QVariantList& arguments) {
    packageKit->send(call.path(), QStringLiteral("org.freedesktop.PackageKit.Transaction"),
                     QString::fromLatin1(signal), arguments);
  }

  /// Lets a command "xdg-mime" name this program for every scheme.
  void setSchemeHandler(const char* program) {
    const FileURL command = directory.url("xdg-mime");
    writeFile(command, std::string("#!/bin/sh\necho ") + program + "\n");
    std::filesystem::permissions(command.path(), std::filesystem::perms::owner_all);
  }

  static void waitUntilItCanCheck(const PackageUpdates& service) {
    QEventLoop loop;
    QObject::connect(&service, &UpdateService::canCheckForUpdatesChanged, &loop, [&] {
      if (service.canCheckForUpdates()) loop.quit();
    });
    if (!service.canCheckForUpdates()) loop.exec();
  }

  void check() {
    PackageUpdates service(bus->connect(), "tidemar", texts, alerts);
    waitUntilItCanCheck(service);
    service.checkForUpdates();
    EXPECT_FALSE(service.canCheckForUpdates()) << "while it is checking";
    service.checkForUpdates();
    waitUntilItCanCheck(service);
  }

  const UpdateTexts texts{.failed = "Couldn't check",
                          .isUpToDate = "Up to date",
                          .newVersion = "New version",
                          .newVersionHint = "Install it"};
  std::optional<PrivateBus> bus;
  std::optional<FakeService> packageKit;
  int transactions = 0;
  QStringList jobs;
  QStringList updates;
  QString troubledJob;
  Trouble trouble = Trouble::fails;
  WrittenAlerts alerts;
  OpenedURLs softwareCentre{"appstream"};
  TemporaryDirectory directory;
  ScopedEnvironment searchPath{"PATH", directory.path() + ":/usr/bin:/bin"};
};

TEST_F(PackageUpdatesTest, ItSaysThatNothingIsNewOrOpensTheSoftwareCentre) {
  struct Row {
    const char* name;
    QStringList updates;
    const char* handler;
    std::vector<std::string> alerts;
    QStringList opened;
  };
  const QString ours = QStringLiteral("tidemar;0.2.0;amd64;somewhere");
  const QString page = QStringLiteral("appstream:app.quernly.tidemar");
  const std::vector<Row> rows = {
      {"nothing is new", {}, "centre.desktop", {"Up to date"}, {}},
      {"other packages are",
       {QStringLiteral("tidemar-extras;9;amd64;x"), QStringLiteral("libc6;tidemar;amd64;x")},
       "centre.desktop",
       {"Up to date"},
       {}},
      {"Tidemar is", {QStringLiteral("libc6;2;amd64;x"), ours}, "centre.desktop", {}, {page}},
      {"there is no software centre", {ours}, "", {"New version"}, {}},
  };
  startPackageKit();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    updates = row.updates;
    jobs.clear();
    alerts.shown.clear();
    softwareCentre.urls.clear();
    setSchemeHandler(row.handler);
    check();
    EXPECT_EQ(jobs, QStringList({QStringLiteral("RefreshCache"), QStringLiteral("GetUpdates")}))
        << "once, although it was asked for twice";
    std::vector<std::string> messages;
    for (const Alerts::Alert& alert : alerts.shown)
      messages.push_back(alert.message);
    EXPECT_EQ(messages, row.alerts);
    EXPECT_EQ(softwareCentre.urls, row.opened);
  }
}

TEST_F(PackageUpdatesTest, AFailureIsNeverTakenForUpToDate) {
  struct Row {
    const char* name;
    Trouble trouble;
    const char* job;
    const char* information;
  };
  const std::vector<Row> rows = {
      {"no network", Trouble::fails, "RefreshCache", "There is no network."},
      {"the updates can't be listed", Trouble::fails, "GetUpdates", "There is no network."},
      {"the user may not", Trouble::isRefused, "RefreshCache", "Not today."},
      {"it ends in the middle", Trouble::endsTheService, "GetUpdates",
       "The package service doesn't answer."},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    startPackageKit();
    trouble = row.trouble;
    troubledJob = QString::fromLatin1(row.job);
    alerts.shown.clear();
    check();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0].message, texts.failed);
    EXPECT_EQ(alerts.shown[0].information, row.information);
  }
}

TEST_F(PackageUpdatesTest, ItCanOnlyCheckAPackageWithAPackageService) {
  const auto canCheck = [this](std::optional<std::string> package) {
    const QDBusConnection ours = bus->connect();
    PackageUpdates service(ours, std::move(package), texts, alerts);
    // The service has asked by now; this is asked after it, and answered after it.
    for (int round = 0; round < 2; ++round) {
      QDBusMessage last = QDBusMessage::createMethodCall(
          QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
          QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
      ours.call(last, QDBus::BlockWithGui);
    }
    return service.canCheckForUpdates();
  };
  EXPECT_FALSE(canCheck("tidemar")) << "no package service";
  startPackageKit();
  EXPECT_TRUE(canCheck("tidemar"));
  EXPECT_FALSE(canCheck(std::nullopt)) << "no package";
  EXPECT_TRUE(packageKit->calls.empty()) << "it isn't started to find that out";
}

TEST(PackageOwnershipTest, OnlyAProgramInThePackagesListBelongsToIt) {
  const TemporaryDirectory lists;
  writeFile(lists.url("tidemar.list"), "/.\n/usr\n/usr/bin\n/usr/bin/tidemar\n");
  EXPECT_EQ(packageOfProgram(FileURL("/usr/bin/tidemar"), lists.url()), "tidemar");
  EXPECT_EQ(packageOfProgram(FileURL("/usr/local/bin/tidemar"), lists.url()), std::nullopt);
  EXPECT_EQ(packageOfProgram(FileURL("/usr/bin/other"), lists.url()), std::nullopt);
  EXPECT_EQ(packageOfProgram(FileURL("/usr/bin/tidemar"), lists.url("none")), std::nullopt);
}

}  // namespace
}  // namespace tidemar
