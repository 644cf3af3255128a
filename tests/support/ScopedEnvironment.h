#pragma once

#include <optional>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar::testing {

/// Sets a variable of the environment for as long as it lives, then puts back what was there.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::string& value);
  ~ScopedEnvironment();
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  std::string _name;
  std::optional<std::string> _former;
};

/// Makes a directory the user's home, with the base directories in their usual places below it.
class ScopedHome {
 public:
  explicit ScopedHome(const FileURL& home);

 private:
  ScopedEnvironment _home;
  ScopedEnvironment _data;
  ScopedEnvironment _configuration;
};

}  // namespace tidemar::testing
