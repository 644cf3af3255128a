/// instance: a start of the application without anything behind it. Waits for a byte on the
/// standard input, tries to become the first, and prints the role; as the first it then prints what
/// it is asked for, a line each, until its standard input ends. Usage: instance directory [URL]

#include <QCoreApplication>
#include <QSocketNotifier>
#include <iostream>
#include <optional>
#include <string>

#include <unistd.h>

#include "Platform/Desktop/ApplicationInstance.h"

namespace {

void print(const std::string& line) {
  std::cout << line << std::endl;
}

/// Whether there was a byte to read.
bool readByte() {
  char byte = 0;
  return read(STDIN_FILENO, &byte, 1) == 1;
}

}  // namespace

int main(int argc, char** argv) {
  using tidemar::ApplicationInstance;
  using Role = ApplicationInstance::Role;
  const QCoreApplication application(argc, argv);
  if (argc < 2 || !readByte()) return EXIT_FAILURE;
  const auto url = argc > 2 ? std::optional<std::string>(argv[2]) : std::nullopt;
  ApplicationInstance instance{tidemar::FileURL(argv[1])};
  QObject::connect(&instance, &ApplicationInstance::activated, [] { print("activated"); });
  QObject::connect(&instance, &ApplicationInstance::opened, print);
  try {
    const Role role = instance.claim({.url = url}, {});
    print(role == Role::first ? "first" : role == Role::refused ? "refused" : "handed over");
    if (role != Role::first) return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    print(error.what());
    return EXIT_FAILURE;
  }
  QSocketNotifier end(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&end, &QSocketNotifier::activated, [] {
    if (!readByte()) QCoreApplication::quit();
  });
  return QCoreApplication::exec();
}
