#include "Helper.h"

#include <QProcessEnvironment>
#include <QStandardPaths>
#include <csignal>

#include <sys/prctl.h>

namespace tidemar::testing {

Helper::~Helper() {
  stop();
}

bool Helper::exists(const char* name) {
  return !QStandardPaths::findExecutable(QString::fromLatin1(name)).isEmpty();
}

void Helper::start(const QString& program, const QStringList& arguments,
                   const QStringList& variables) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const QString& variable : variables)
    environment.insert(variable.section(u'=', 0, 0), variable.section(u'=', 1));
  _process.setProcessEnvironment(environment);
  _process.setStandardErrorFile(QProcess::nullDevice());
  _process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
  _process.start(program, arguments);
  _process.waitForStarted();
}

QString Helper::readLine() {
  while (!_process.canReadLine() && _process.waitForReadyRead()) {
  }
  return QString::fromUtf8(_process.readLine()).trimmed();
}

void Helper::stop() {
  if (_process.state() == QProcess::NotRunning) return;
  _process.terminate();
  if (!_process.waitForFinished()) {
    _process.kill();
    _process.waitForFinished();
  }
}

}  // namespace tidemar::testing
