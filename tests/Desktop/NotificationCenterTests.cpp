#include <QCoroTask>
#include <QDBusArgument>
#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <optional>

#include <gtest/gtest.h>

#include "FakeNotificationServer.h"
#include "Platform/Desktop/DesktopNotificationCenter.h"
#include "PrivateBus.h"

namespace tidemar {
namespace {

using namespace testing;
using namespace std::chrono_literals;

/// What the center says about a refusal; empty where the notification was taken.
QCoro::Task<std::string> refusal(NotificationCenter& center, std::string identifier,
                                 std::string title, std::string body) {
  try {
    co_await center.add(identifier, title, body);
    co_return "";
  } catch (const std::runtime_error& error) {
    co_return error.what();
  }
}

class NotificationCenterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Helper::exists("dbus-daemon")) GTEST_SKIP() << "needs dbus-daemon";
    bus.emplace();
    center.emplace(bus->connect());
  }

  std::string add(const std::string& identifier, const std::string& title = "Downloads",
                  const std::string& body = "1 item will go to the Bin tomorrow.") {
    return QCoro::waitFor(refusal(*center, identifier, title, body));
  }

  bool isAuthorized() { return QCoro::waitFor(center->isAuthorized()); }

  std::optional<PrivateBus> bus;
  std::optional<DesktopNotificationCenter> center;
};

TEST_F(NotificationCenterTest, AQuietNotificationIsDelivered) {
  const FakeNotificationServer server(bus->connect());
  EXPECT_TRUE(isAuthorized());
  EXPECT_TRUE(QCoro::waitFor(center->requestAuthorization()));
  EXPECT_TRUE(server.notifications.empty()) << "asking shows nothing";

  ASSERT_EQ(add("tomorrow.1", "Téléchargements", "2 items will go to the Bin tomorrow."), "");
  ASSERT_EQ(server.notifications.size(), 1U);
  const Notification& shown = server.notifications[0];
  EXPECT_EQ(shown.signature, "susssasa{sv}i");
  EXPECT_EQ(shown.applicationName, QStringLiteral("Tidemar"));
  EXPECT_EQ(shown.replacedID, 0U);
  EXPECT_EQ(shown.icon, QStringLiteral("app.quernly.tidemar"));
  EXPECT_EQ(shown.summary, QStringLiteral("Téléchargements"));
  EXPECT_EQ(shown.body, QStringLiteral("2 items will go to the Bin tomorrow."));
  EXPECT_EQ(shown.actions, QStringList());
  EXPECT_EQ(shown.expiry, -1);
  const QVariant urgency = shown.hints[QStringLiteral("urgency")];
  EXPECT_EQ(urgency.typeId(), QMetaType::UChar) << "servers pass over any other type";
  EXPECT_EQ(urgency.toInt(), 0);
  EXPECT_EQ(shown.hints[QStringLiteral("desktop-entry")].toString(),
            QStringLiteral("app.quernly.tidemar"));
  EXPECT_EQ(shown.hints.size(), 2) << "nothing that makes it pass by unseen, or heard";
}

TEST_F(NotificationCenterTest, TheSameIdentifierReplacesUnderTheSameServerAlone) {
  std::optional<FakeNotificationServer> server;
  server.emplace(bus->connect(), QStringList(), 7);
  for (const char* identifier : {"tomorrow.1", "tomorrow.2", "tomorrow.1", "tomorrow.2"})
    ASSERT_EQ(add(identifier), "");
  std::vector<quint32> replaced;
  for (const Notification& shown : server->notifications)
    replaced.push_back(shown.replacedID);
  EXPECT_EQ(replaced, (std::vector<quint32>{0, 0, 7, 8}));

  server.reset();
  server.emplace(bus->connect(), QStringList(), 7);
  ASSERT_EQ(add("tomorrow.2"), "");
  EXPECT_EQ(server->notifications.at(0).replacedID, 0U) << "the id may be another program's now";
}

TEST_F(NotificationCenterTest, NamesAreShownAsTheyAreWhateverTheServerReads) {
  const QString name = QStringLiteral("<b>bold</b> & \"<img src='x'/>");
  std::optional<FakeNotificationServer> server;
  const struct {
    const char* title;
    QStringList capabilities;
    QString body;
  } rows[] = {
      {"a server of plain text", {QStringLiteral("body")}, name},
      {"a server that reads markup",
       {QStringLiteral("body"), QStringLiteral("body-markup")},
       QStringLiteral("&lt;b&gt;bold&lt;/b&gt; &amp; \"&lt;img src='x'/&gt;")},
      {"a server with a capability of a similar name", {QStringLiteral("x-body-markup")}, name},
  };
  for (const auto& row : rows) {
    server.reset();
    server.emplace(bus->connect(), row.capabilities);
    ASSERT_EQ(add("tomorrow.1", name.toStdString(), name.toStdString()), "") << row.title;
    EXPECT_EQ(server->notifications.at(0).body, row.body) << row.title;
    EXPECT_EQ(server->notifications.at(0).summary, name)
        << row.title << ": a summary has no markup";
  }
}

TEST_F(NotificationCenterTest, AServerIsFoundWhenItComesAndMissedWhenItGoes) {
  const std::string missing = "This desktop has no notification service.";
  EXPECT_FALSE(isAuthorized());
  EXPECT_FALSE(QCoro::waitFor(center->requestAuthorization()));
  EXPECT_EQ(add("tomorrow.1"), missing);
  {
    const FakeNotificationServer server(bus->connect());
    EXPECT_TRUE(isAuthorized());
    EXPECT_EQ(add("tomorrow.1"), "");
  }
  EXPECT_FALSE(isAuthorized());
  EXPECT_EQ(add("tomorrow.1"), missing);
}

TEST_F(NotificationCenterTest, ARefusalIsToldWithoutTheServersWordsAndHoldsNothingUp) {
  FakeNotificationServer server(bus->connect());
  server.manner = FakeNotificationServer::Manner::refuses;
  EXPECT_EQ(add("tomorrow.1"), "The notification service refused (org.example.TooMany).");
  server.manner = FakeNotificationServer::Manner::accepts;
  EXPECT_EQ(add("tomorrow.1"), "");
}

TEST_F(NotificationCenterTest, AServerThatDoesNotAnswerIsNotWaitedForOnTheMainThread) {
  FakeNotificationServer server(bus->connect());
  server.manner = FakeNotificationServer::Manner::isSilent;
  center.emplace(bus->connect(), 100ms);
  int turns = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&turns] { ++turns; });
  timer.start(1ms);
  EXPECT_FALSE(isAuthorized());
  EXPECT_EQ(add("tomorrow.1"), "The notification service didn't answer.");
  EXPECT_GT(turns, 10);
}

TEST_F(NotificationCenterTest, WithoutABusNothingIsSent) {
  center.emplace(QDBusConnection(QStringLiteral("there is no such connection")));
  EXPECT_FALSE(isAuthorized());
  EXPECT_EQ(add("tomorrow.1"), "There is no session bus to send notifications over.");
}

/// The notifications that dunst showed, as the markup that it drew.
std::vector<std::string> shownByDunst(const QDBusConnection& connection) {
  const auto call = [&connection](const char* method) {
    return connection.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"), QStringLiteral("org.dunstproject.cmd0"),
        QString::fromLatin1(method)));
  };
  call("NotificationCloseAll");
  const QDBusMessage history = call("NotificationListHistory");
  std::vector<std::string> lines;
  for (const QVariantMap& shown : qdbus_cast<QList<QVariantMap>>(history.arguments().value(0))) {
    lines.push_back(shown[QStringLiteral("message")].toString().toStdString());
  }
  std::ranges::sort(lines);
  return lines;
}

TEST_F(NotificationCenterTest, ARealServerTakesAndReplacesThem) {
  if (!Helper::exists("dunst") || !Helper::exists("Xvfb")) GTEST_SKIP() << "needs dunst and Xvfb";
  const TemporaryDirectory directory;
  Helper display;
  display.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                         QStringLiteral("-nolisten"), QStringLiteral("tcp")});
  const QString number = display.readLine();
  ASSERT_FALSE(number.isEmpty());
  EXPECT_FALSE(isAuthorized());

  QDBusConnection connection = bus->connect();
  QDBusServiceWatcher watcher(QStringLiteral("org.freedesktop.Notifications"), connection,
                              QDBusServiceWatcher::WatchForRegistration);
  QEventLoop untilItIsThere;
  QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &untilItIsThere,
                   &QEventLoop::quit);
  QTimer::singleShot(20s, &untilItIsThere, &QEventLoop::quit);
  writeFile(directory.url("dunstrc"), "[global]\nmarkup = full\n");
  Helper dunst;
  dunst.start(QStringLiteral("dunst"),
              {QStringLiteral("-config"), QString::fromStdString(directory.path("dunstrc"))},
              {QStringLiteral("DISPLAY=:") + number,
               QStringLiteral("DBUS_SESSION_BUS_ADDRESS=") + bus->address()});
  untilItIsThere.exec();

  ASSERT_TRUE(isAuthorized());
  ASSERT_EQ(add("tomorrow.1", "<b>Downloads</b>", "1 <item>"), "");
  ASSERT_EQ(add("tomorrow.2", "Desktop", "3 items"), "");
  ASSERT_EQ(add("tomorrow.1", "<b>Downloads</b>", "2 <b>items</b> & more"), "");
  EXPECT_EQ(shownByDunst(connection),
            (std::vector<std::string>{"<b>&lt;b&gt;Downloads&lt;/b&gt;</b>\n"
                                      "2 &lt;b&gt;items&lt;/b&gt; &amp; more",
                                      "<b>Desktop</b>\n3 items"}));
}

}  // namespace
}  // namespace tidemar
