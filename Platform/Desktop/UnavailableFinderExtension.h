#pragma once

#include "Platform/Desktop/FinderExtension.h"

namespace tidemar {

/// Stands for the file managers' extension in a build that doesn't have it: it is off.
class UnavailableFinderExtension : public FinderExtension {
 public:
  bool isEnabled() const override { return false; }
};

}  // namespace tidemar
