#include "Tidemar/Model/ApplicationLog.h"

namespace tidemar {

const Logger& applicationLog() {
  static const Logger logger("app.quernly.tidemar", "app");
  return logger;
}

}  // namespace tidemar
