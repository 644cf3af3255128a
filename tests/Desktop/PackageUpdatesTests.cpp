#include <QDBusObjectPath>

#include "FakeDesktop.h"
#include "Platform/Desktop/PackageOwnership.h"
#include "Platform/Desktop/PackageUpdates.h"
#include "support/RecordingAlerts.h"

namespace tidemar::testing {
namespace {

using namespace Qt::StringLiterals;

const QString packageKitName = u"org.freedesktop.PackageKit"_s;
const QString packageKitPath = u"/org/freedesktop/PackageKit"_s;

class PackageUpdatesTest : public BusTest {
 protected:
  enum class Trouble { fails, isRefused, endsTheService };

  /// A PackageKit that has these updates and gets into trouble by this job.
  void startPackageKit() {
    packageKit.emplace(bus->connect(), packageKitName, packageKitPath,
                       [this](const QDBusMessage& call) { return answer(call); });
  }

  QDBusMessage answer(const QDBusMessage& call) {
    if (call.member() == u"CreateTransaction") {
      const QString path = packageKitPath + u"/%1_job"_s.arg(++transactions);
      return call.createReply(QVariant::fromValue(QDBusObjectPath(path)));
    }
    jobs << call.member();
    EXPECT_NE(call.arguments(), QVariantList{true}) << "what isn't a week old needn't be fetched";
    const bool isTroubled = call.member() == troubledJob;
    if (isTroubled && trouble == Trouble::isRefused)
      return call.createErrorReply(u"org.example.Refused"_s, u"Not today."_s);
    if (isTroubled && trouble == Trouble::endsTheService) {
      packageKit->leave();
      return call.createReply();
    }
    if (isTroubled) tell(call, "ErrorCode", {2U, u"There is no network."_s});
    if (call.member() == u"GetUpdates") {
      for (const QString& update : updates)
        tell(call, "Package", {12U, update, u"a summary"_s});
    }
    tell(call, "Finished", {isTroubled ? 2U : 1U, 100U});
    return call.createReply();
  }

  void tell(const QDBusMessage& call, const char* signal, const QVariantList& arguments) {
    packageKit->send(call.path(), u"org.freedesktop.PackageKit.Transaction"_s,
                     QString::fromLatin1(signal), arguments);
  }

  /// Lets a command "xdg-mime" name this program for every scheme.
  void setSchemeHandler(const char* program) {
    const FileURL command = directory.url("xdg-mime");
    writeFile(command, std::string("#!/bin/sh\necho ") + program + "\n");
    std::filesystem::permissions(command.path(), std::filesystem::perms::owner_all);
  }

  void check() {
    PackageUpdates service(bus->connect(), "tidemar", texts, alerts);
    const auto isReady = [&] { return service.canCheckForUpdates(); };
    waitUntil(isReady);
    service.checkForUpdates();
    EXPECT_FALSE(isReady()) << "while it is checking";
    service.checkForUpdates();
    waitUntil(isReady);
  }

  const UpdateTexts texts{.failed = "Couldn't check",
                          .isUpToDate = "Up to date",
                          .newVersion = "New version",
                          .newVersionHint = "Install it"};
  std::optional<FakeService> packageKit;
  int transactions = 0;
  QStringList jobs;
  QStringList updates;
  QString troubledJob;
  Trouble trouble = Trouble::fails;
  RecordingAlerts alerts;
  OpenedURLs softwareCentre{"appstream"};
  TemporaryDirectory directory;
  ScopedEnvironment searchPath{"PATH", directory.path() + ":/usr/bin:/bin"};
};

TEST_F(PackageUpdatesTest, ItSaysThatNothingIsNewOrOpensTheSoftwareCentre) {
  const QString ours = u"tidemar;0.2.0;amd64;somewhere"_s;
  const QString page = u"appstream:app.quernly.tidemar"_s;
  const struct {
    const char* name;
    QStringList updates;
    const char* handler;
    std::vector<std::string> alerts;
    QStringList opened;
  } rows[] = {
      {"nothing is new", {}, "centre.desktop", {"Up to date\n"}, {}},
      {"other packages are",
       {u"tidemar-extras;9;amd64;x"_s, u"libc6;tidemar;amd64;x"_s},
       "centre.desktop",
       {"Up to date\n"},
       {}},
      {"Tidemar is", {u"libc6;2;amd64;x"_s, ours}, "centre.desktop", {}, {page}},
      {"there is no software centre", {ours}, "", {"New version\nInstall it"}, {}},
  };
  startPackageKit();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    updates = row.updates;
    jobs.clear();
    alerts.told.clear();
    softwareCentre.urls.clear();
    setSchemeHandler(row.handler);
    check();
    EXPECT_EQ(jobs, QStringList({u"RefreshCache"_s, u"GetUpdates"_s}))
        << "once, although it was asked for twice";
    EXPECT_EQ(alerts.told, row.alerts);
    EXPECT_EQ(softwareCentre.urls, row.opened);
  }
}

TEST_F(PackageUpdatesTest, AFailureIsNeverTakenForUpToDate) {
  const struct {
    const char* name;
    Trouble trouble;
    const char* job;
    const char* information;
  } rows[] = {
      {"no network", Trouble::fails, "RefreshCache", "There is no network."},
      {"the updates can't be listed", Trouble::fails, "GetUpdates", "There is no network."},
      {"the user may not", Trouble::isRefused, "RefreshCache", "Not today."},
      {"it ends in the middle", Trouble::endsTheService, "GetUpdates",
       "The package service doesn't answer."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    startPackageKit();
    trouble = row.trouble;
    troubledJob = QString::fromLatin1(row.job);
    alerts.told.clear();
    check();
    EXPECT_EQ(alerts.told, std::vector{texts.failed + "\n" + row.information});
  }
}

TEST_F(PackageUpdatesTest, ItCanOnlyCheckAPackageWithAPackageService) {
  const auto canCheck = [this](std::optional<std::string> package) {
    const QDBusConnection ours = bus->connect();
    PackageUpdates service(ours, std::move(package), texts, alerts);
    // The service has asked by now; this is asked after it, and answered after it.
    for (int round = 0; round < 2; ++round)
      settle(ours, u"org.freedesktop.DBus"_s);
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
}  // namespace tidemar::testing
