#include "Platform/Desktop/CurrentDesktop.h"

namespace tidemar::CurrentDesktop {

QStringList names() {
  return qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts);
}

bool is(const QString& name) {
  return names().contains(name, Qt::CaseInsensitive);
}

}  // namespace tidemar::CurrentDesktop
