// The main function of these tests, which run on an X11 display of their own, where the machine has
// the program for one.

#include <QApplication>

#include "FakeDesktop.h"

int main(int argc, char** argv) {
  QProcess server;
  const QString display = tidemar::testing::start(
      server, QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1")});
  qputenv("DISPLAY", ':' + display.toUtf8());
  qputenv("QT_QPA_PLATFORM", display.isEmpty() ? "offscreen" : "xcb");
  // Each test has a bus of its own; the machine's is none of their business.
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
  ::testing::InitGoogleTest(&argc, argv);
  int result = 0;
  {
    const QApplication application(argc, argv);
    result = RUN_ALL_TESTS();
  }
  server.kill();
  server.waitForFinished();
  return result;
}
