#include "TidemarUI/State/PathName.h"

#include "Platform/Text.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

std::string nameOfPath(const std::string& path) {
  return displayText(FileURL(path).lastPathComponent());
}

std::string nameOfParent(const std::string& path) {
  return displayText(FileURL(path).deletingLastPathComponent().lastPathComponent());
}

}  // namespace tidemar
