#include <QApplication>
#include <cstdlib>
#include <iostream>

#include "Platform/Desktop/TerminationSignals.h"
#include "Tidemar/AppDelegate.h"

namespace {

bool hasDisplay() {
  for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY", "QT_QPA_PLATFORM"}) {
    if (const char* value = std::getenv(variable); value != nullptr && *value != '\0') return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (!hasDisplay()) {
    std::cerr << "Tidemar needs a desktop session: there is no display.\n";
    return EXIT_FAILURE;
  }
  // The bytes as they were given, before the toolkit takes its own arguments out and turns them
  // into text.
  const std::vector<std::string> urls(argv + 1, argv + argc);

  tidemar::TerminationSignals terminationSignals;
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Tidemar"));
  QApplication::setDesktopFileName(QStringLiteral("app.quernly.tidemar"));
  QApplication::setQuitOnLastWindowClosed(false);
  QObject::connect(&terminationSignals, &tidemar::TerminationSignals::received, &application,
                   &QApplication::quit);
  terminationSignals.watch();

  tidemar::AppDelegate delegate;
  int status = EXIT_SUCCESS;
  if (delegate.start(urls, status)) status = QApplication::exec();
  // Nothing clears any more; what still reads a large folder need not be waited for.
  std::quick_exit(status);
}
