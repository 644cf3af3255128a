#include <QApplication>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Desktop/TerminationSignals.h"
#include "Tidemar/AppDelegate.h"

namespace {

bool hasDisplay() {
  return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
         !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}

}  // namespace

int main(int argc, char** argv) {
  tidemar::CommandLine commandLine;
  try {
    // The bytes, before the toolkit takes its own arguments out and makes text of the others.
    commandLine = tidemar::parseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::invalid_argument& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
  if (!commandLine.answer.empty()) {
    std::cout << commandLine.answer;
    return EXIT_SUCCESS;
  }
  if (!hasDisplay()) {
    std::cerr << "Tidemar needs a desktop session: there is no display.\n";
    return EXIT_FAILURE;
  }
  const auto token = tidemar::ActivationToken::fromEnvironment();
  tidemar::TerminationSignals terminationSignals;
  // The login item brings the program back, and without a window; a restored session would not.
  QApplication::setAttribute(Qt::AA_DisableSessionManager);
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Tidemar"));
  QApplication::setDesktopFileName(QStringLiteral("app.quernly.tidemar"));
  QApplication::setQuitOnLastWindowClosed(false);

  tidemar::AppDelegate delegate;
  QObject::connect(&terminationSignals, &tidemar::TerminationSignals::received, &delegate,
                   [&delegate] { delegate.quit(); });
  terminationSignals.watch();
  int status = EXIT_SUCCESS;
  if (delegate.start(commandLine, token, status)) status = QApplication::exec();
  // Nothing clears any more; what still reads a large folder need not be waited for.
  std::quick_exit(status);
}
