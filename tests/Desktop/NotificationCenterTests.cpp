#include <QCoroTask>
#include <QDBusArgument>
#include <QTimer>

#include "FakeDesktop.h"
#include "Platform/Desktop/DesktopNotificationCenter.h"

namespace tidemar::testing {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

const QString serviceName = u"org.freedesktop.Notifications"_s;
const QString objectPath = u"/org/freedesktop/Notifications"_s;

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

class NotificationCenterTest : public BusTest {
 protected:
  enum class Manner { accepts, refuses, isSilent };

  void SetUp() override {
    BusTest::SetUp();
    if (bus) center.emplace(bus->connect(), u"Open it"_s);
  }

  /// A server with these capabilities, whose ids begin at 7.
  void startServer(const QStringList& capabilities = {}) {
    server.reset();
    server.emplace(
        bus->connect(), serviceName, objectPath,
        [this, capabilities, id = 7U](const QDBusMessage& call) mutable {
          if (manner == Manner::isSilent) return QDBusMessage();
          if (callsTooEarly > 0) {
            --callsTooEarly;
            return call.createErrorReply(QDBusError::UnknownMethod, u"No such object"_s);
          }
          if (call.member() == u"GetCapabilities") return call.createReply(capabilities);
          if (call.member() == u"GetServerInformation")
            return call.createReply(QVariantList{serverName, u"Vendor"_s, u"1"_s, u"1.2"_s});
          if (manner == Manner::refuses)
            return call.createErrorReply(u"org.example.TooMany"_s, u"too many of “canary”"_s);
          shown.push_back(call.arguments());
          EXPECT_EQ(call.signature(), u"susssasa{sv}i"_s);
          const quint32 replaced = shown.back()[1].toUInt();
          return call.createReply(replaced != 0 ? replaced : id++);
        });
  }

  std::string add(const std::string& identifier, const std::string& title = "Downloads",
                  const std::string& body = "1 item will go to the Bin tomorrow.") {
    return QCoro::waitFor(refusal(*center, identifier, title, body));
  }

  bool isAuthorized() {
    const bool isSo = QCoro::waitFor(center->isAuthorized());
    EXPECT_EQ(QCoro::waitFor(center->requestAuthorization()), isSo);
    return isSo;
  }

  std::optional<DesktopNotificationCenter> center;
  std::optional<FakeService> server;
  Manner manner = Manner::accepts;
  int callsTooEarly = 0;  ///< So many more meet no object under the server's name.
  QString serverName = u"gnome-shell"_s;
  std::vector<QVariantList> shown;  ///< The arguments of each call of "Notify".
};

TEST_F(NotificationCenterTest, AQuietNotificationIsDelivered) {
  startServer();
  EXPECT_TRUE(isAuthorized());
  EXPECT_TRUE(shown.empty()) << "asking shows nothing";

  ASSERT_EQ(add("tomorrow.1", "Téléchargements", "2 items will go to the Bin tomorrow."), "");
  ASSERT_EQ(shown.size(), 1U);
  QVariantList expected = {u"Tidemar"_s,
                           0U,
                           u"app.quernly.tidemar"_s,
                           u"Téléchargements"_s,
                           u"2 items will go to the Bin tomorrow."_s,
                           QStringList()};
  EXPECT_EQ(shown[0].first(6), expected);
  const auto hints = qdbus_cast<QVariantMap>(shown[0][6]);
  const QVariant urgency = hints[u"urgency"_s];
  EXPECT_EQ(urgency.typeId(), QMetaType::UChar) << "servers pass over any other type";
  EXPECT_EQ(urgency.toInt(), 0);
  EXPECT_EQ(hints[u"desktop-entry"_s].toString(), u"app.quernly.tidemar"_s);
  EXPECT_EQ(hints[u"suppress-sound"_s], QVariant(true));
  EXPECT_EQ(hints.size(), 3) << "nothing that makes it pass by unseen";
  EXPECT_EQ(shown[0][7].toInt(), -1);

  serverName = u"Plasma"_s;
  ASSERT_EQ(add("tomorrow.1"), "");
  EXPECT_EQ(qdbus_cast<QVariantMap>(shown[1][6])[u"urgency"_s], QVariant::fromValue(uchar{1}))
      << "what isn't urgent would come into no list there";
}

TEST_F(NotificationCenterTest, AServerThatHasOnlyItsNameYetIsWaitedForAndNotForEver) {
  callsTooEarly = 2;
  startServer();
  EXPECT_EQ(add("tomorrow.1"), "");
  EXPECT_EQ(shown.size(), 1U);

  callsTooEarly = 1'000;
  center.emplace(bus->connect(), u"Open it"_s, 100ms);
  EXPECT_FALSE(isAuthorized());
}

TEST_F(NotificationCenterTest, TheSameIdentifierReplacesUnderTheSameServerAlone) {
  startServer();
  for (const char* identifier : {"tomorrow.1", "tomorrow.2", "tomorrow.1", "tomorrow.2"})
    ASSERT_EQ(add(identifier), "");
  startServer();
  ASSERT_EQ(add("tomorrow.2"), "");
  std::vector<quint32> replaced;
  for (const QVariantList& arguments : shown)
    replaced.push_back(arguments[1].toUInt());
  EXPECT_EQ(replaced, (std::vector<quint32>{0, 0, 7, 8, 0}))
      << "under another server the id may be another program's";
}

TEST_F(NotificationCenterTest, AClickTellsTheIdentifierOfWhatWasClicked) {
  startServer({u"body"_s, u"actions"_s});
  ASSERT_EQ(add("tomorrow.1"), "");
  ASSERT_EQ(add("tomorrow.2"), "");
  EXPECT_EQ(shown.back()[5].toStringList(), (QStringList{u"default"_s, u"Open it"_s}));
  std::vector<std::string> clicks;
  QObject::connect(&*center, &DesktopNotificationCenter::clicked, &*center,
                   [&](const std::string& identifier) { clicks.push_back(identifier); });
  const auto invoke = [this](quint32 id, const QString& action) {
    server->send(objectPath, serviceName, u"ActionInvoked"_s, {id, action});
  };
  invoke(6, u"default"_s);
  invoke(8, u"close"_s);
  invoke(8, u"default"_s);
  invoke(7, u"default"_s);
  waitUntil([&] { return !clicks.empty() && clicks.back() == "tomorrow.1"; });
  EXPECT_EQ(clicks, (std::vector<std::string>{"tomorrow.2", "tomorrow.1"}))
      << "another program's and other actions aren't clicks on ours";
}

TEST_F(NotificationCenterTest, NamesAreShownAsTheyAreWhateverTheServerReads) {
  const QString name = u"<b>bold</b> & \"<img src='x'/>"_s;
  const struct {
    QStringList capabilities;
    QString body;
  } rows[] = {
      {{u"body"_s, u"x-body-markup"_s}, name},
      {{u"body"_s, u"body-markup"_s}, u"&lt;b&gt;bold&lt;/b&gt; &amp; \"&lt;img src='x'/&gt;"_s},
  };
  for (const auto& row : rows) {
    startServer(row.capabilities);
    ASSERT_EQ(add("tomorrow.1", name.toStdString(), name.toStdString()), "");
    EXPECT_EQ(shown.back()[3].toString(), name) << "a summary has no markup";
    EXPECT_EQ(shown.back()[4].toString(), row.body);
  }
}

TEST_F(NotificationCenterTest, WhatKeepsItBackIsToldAndHoldsNothingUp) {
  const std::string missing = "This desktop has no notification service.";
  EXPECT_FALSE(isAuthorized());
  EXPECT_EQ(add("tomorrow.1"), missing);
  bus->makeStartable(serviceName);
  EXPECT_EQ(add("tomorrow.1"), missing) << "it isn't started by that";
  int serversThatCame = 0;
  QObject::connect(&*center, &DesktopNotificationCenter::serverCame, &*center,
                   [&] { ++serversThatCame; });
  startServer();
  waitUntil([&] { return serversThatCame > 0; });
  EXPECT_EQ(serversThatCame, 1);
  EXPECT_TRUE(isAuthorized());
  manner = Manner::refuses;
  EXPECT_EQ(add("tomorrow.1"), "The notification service refused (org.example.TooMany).")
      << "the server's own words could name an item";
  manner = Manner::accepts;
  EXPECT_EQ(add("tomorrow.1"), "");

  // The main thread goes on while a server doesn't answer.
  manner = Manner::isSilent;
  center.emplace(bus->connect(), QString(), 100ms);
  int turns = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&turns] { ++turns; });
  timer.start(1ms);
  EXPECT_FALSE(isAuthorized());
  EXPECT_EQ(add("tomorrow.1"), "The notification service didn't answer.");
  EXPECT_GT(turns, 10);

  server.reset();
  EXPECT_EQ(add("tomorrow.1"), missing);
  center.emplace(QDBusConnection(u"there is no such connection"_s), QString());
  EXPECT_FALSE(isAuthorized());
  EXPECT_EQ(add("tomorrow.1"), "There is no session bus to send notifications over.");
}

}  // namespace
}  // namespace tidemar::testing
