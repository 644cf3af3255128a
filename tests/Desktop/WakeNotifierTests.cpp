#include "FakeDesktop.h"
#include "Platform/Desktop/ClockWatcher.h"
#include "Platform/Desktop/WakeNotifier.h"

namespace tidemar::testing {
namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using WakeNotifierTest = BusTest;

TEST_F(WakeNotifierTest, CountsTheWakesThatLogindTells) {
  const struct {
    const char* name;
    std::vector<bool> isAboutToSleep;
    int wakes;
  } rows[] = {
      {"the computer is about to sleep", {true}, 0},
      {"one wake is told twice", {true, false, false}, 1},
      {"it wakes, dozes off again and wakes within a second", {true, false, true, false}, 1},
  };
  QDBusConnection logind = bus->connect();
  logind.registerService(u"org.freedesktop.login1"_s);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const QDBusConnection ours = bus->connect();
    WakeNotifier notifier(ours);
    int wakes = 0;
    QObject::connect(&notifier, &WakeNotifier::didWake, [&wakes] { ++wakes; });
    settle(ours, logind.baseService());  // The bus knows by then what the notifier listens for.
    for (const bool isAboutToSleep : row.isAboutToSleep) {
      QDBusMessage signal = QDBusMessage::createSignal(
          u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s);
      logind.send(signal << isAboutToSleep);
    }
    settle(logind, ours.baseService());
    EXPECT_EQ(wakes, row.wakes);
  }
}

TEST_F(WakeNotifierTest, AsksTheKernelOnlyWhereNoLogindAnswers) {
  const auto watchesClock = [](const WakeNotifier& notifier) {
    return notifier.findChild<ClockWatcher*>() != nullptr;
  };
  const WakeNotifier withoutBus(QDBusConnection(u"none"_s));
  EXPECT_TRUE(watchesClock(withoutBus));

  QDBusConnection other = bus->connect();
  const QDBusConnection ours = bus->connect();
  const WakeNotifier withoutLogind(ours);
  settle(other, ours.baseService());
  settle(ours, other.baseService());
  EXPECT_TRUE(watchesClock(withoutLogind));

  other.registerService(u"org.freedesktop.login1"_s);
  const WakeNotifier withLogind(ours);
  settle(ours, other.baseService());
  EXPECT_FALSE(watchesClock(withLogind));
}

TEST(WakeReportsTest, OneWakeIsToldOnceHoweverOftenItIsReported) {
  WakeReports reports;
  EXPECT_TRUE(reports.isNewWake(100s)) << "the first";
  EXPECT_FALSE(reports.isNewWake(104s)) << "a few seconds later";
  EXPECT_FALSE(reports.isNewWake(108s)) << "a row of reports";
  EXPECT_TRUE(reports.isNewWake(114s)) << "after a short sleep";
}

TEST(TimeAsleepTest, AClockThatIsSetIsNoSleep) {
  TimeAsleep timeAsleep(2h);
  EXPECT_FALSE(timeAsleep.hasGrown(2h + 3ms)) << "the two readings lay apart";
  EXPECT_FALSE(timeAsleep.hasGrown(2h - 3ms));
  EXPECT_TRUE(timeAsleep.hasGrown(2h + 2s));
  EXPECT_FALSE(timeAsleep.hasGrown(2h + 2s)) << "the same sleep again";
}

}  // namespace
}  // namespace tidemar::testing
