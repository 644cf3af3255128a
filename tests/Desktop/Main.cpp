// The main function of these tests, which run on an X11 display of their own, where the machine has
// the program for one.

#include <QApplication>
#include <QProcess>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/prctl.h>

int main(int argc, char** argv) {
  QProcess server;
  // It ends with the tests, should they crash.
  server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
  server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1")});
  while (!server.canReadLine() && server.waitForReadyRead()) {
  }
  const QByteArray display = server.readLine().trimmed();
  if (!display.isEmpty()) qputenv("DISPLAY", ":" + display);
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
