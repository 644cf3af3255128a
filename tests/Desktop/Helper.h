#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace tidemar::testing {

/// Another program, which ends with this object, and with the test should that crash.
class Helper {
 public:
  Helper() = default;
  ~Helper();
  Helper(const Helper&) = delete;
  Helper& operator=(const Helper&) = delete;

  /// Whether the machine has a program of this name.
  static bool exists(const char* name);

  /// Starts it with these variables ("NAME=value") besides those of the test.
  void start(const QString& program, const QStringList& arguments,
             const QStringList& variables = {});

  /// Waits for the next line that it prints; empty where it ended before it did.
  QString readLine();

  void stop();

 private:
  QProcess _process;
};

}  // namespace tidemar::testing
