#include <ctime>

#include "support/Testing.h"

namespace tidemar::testing {

ScopedEnvironment::ScopedEnvironment(std::string name, const std::string& value)
    : _name(std::move(name)) {
  if (const char* former = std::getenv(_name.c_str())) _former = former;
  setenv(_name.c_str(), value.c_str(), 1);
  tzset();
}

ScopedEnvironment::~ScopedEnvironment() {
  if (_former) {
    setenv(_name.c_str(), _former->c_str(), 1);
  } else {
    unsetenv(_name.c_str());
  }
  // The C library remembers the zone until it is told.
  tzset();
}

ScopedHome::ScopedHome(const FileURL& home)
    : _home("HOME", home.path()),
      _data("XDG_DATA_HOME", home.path() + "/.local/share"),
      _configuration("XDG_CONFIG_HOME", home.path() + "/.config") {}

}  // namespace tidemar::testing
