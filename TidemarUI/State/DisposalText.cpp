#include "TidemarUI/State/DisposalText.h"

#include "TidemarUI/State/Labels.h"

namespace tidemar {

std::string disposalText(Disposal disposal, const std::string& bin) {
  return disposal == Disposal::delete_ ? std::string(labels::deletePermanently) : "Move to " + bin;
}

}  // namespace tidemar
