// The main function of the tests that need an application of the toolkit.

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  // Each test has a bus of its own; the machine's is none of their business.
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
  ::testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
