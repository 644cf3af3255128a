#include "TidemarUI/State/SystemBin.h"

namespace tidemar::SystemBin {

std::string name() {
  return "Bin";
}

}  // namespace tidemar::SystemBin
