#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarCore/Disposal.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// When items go. Ordered: now, then the days as they come, then the restart.
struct Moment {
  enum class Kind : std::uint8_t { now, day, restart };

  Kind kind = Kind::now;
  Date startOfDay;  ///< Of a coming day alone; otherwise the same for all.

  static Moment now() { return {Kind::now, {}}; }
  static Moment day(Date startOfDay) { return {Kind::day, startOfDay}; }
  static Moment restart() { return {Kind::restart, {}}; }

  friend auto operator<=>(const Moment&, const Moment&) = default;
};

/// What the items of one group have in common. Ordered by disposal first: all that goes to the Bin
/// comes before all that is deleted.
struct GroupKey {
  Disposal disposal = Disposal::bin;
  Moment moment;

  friend auto operator<=>(const GroupKey&, const GroupKey&) = default;
};

/// Items that go at one moment in one way, as a block of a forecast.
struct ForecastGroup {
  std::string when;            ///< "Now", a day, or "On restart".
  std::string action;          ///< "Delete Permanently" or "Move to {bin}".
  bool isPermanent = false;    ///< The items are deleted.
  bool isAtRestart = false;    ///< They go when the computer restarts.
  std::vector<FileURL> items;  ///< In the order of the folders, and of each folder's plan.
  std::string totalSize;       ///< The sum of their sizes as a file size.
  std::string left = {};       ///< Which of them the last run couldn't remove and why, a line each.

  /// What the group is called. Two of one forecast are called the same where days that are over
  /// still stand in it, since these read as today too.
  std::string id() const { return when + " · " + action; }

  friend bool operator==(const ForecastGroup&, const ForecastGroup&) = default;
};

}  // namespace tidemar
