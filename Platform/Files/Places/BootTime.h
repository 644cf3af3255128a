#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TidemarCore/Date.h"

namespace tidemar {

/// See FileManager::bootTime. The kernel's answer moves when the clock is set, so the earliest one
/// seen in this boot is kept in the user's runtime directory, where there is one. Whatever lies
/// there, the answer is never later than the kernel's. Any number of threads and processes may ask
/// at once.
Date readBootTime();

/// The boot time in the text of /proc/stat: its line "btime", in whole seconds.
std::optional<Date> bootTimeInProcStat(std::string_view text);

/// The record of a boot: the boot's id and the earliest time seen, a line each.
struct BootRecord {
  std::string bootID;
  Date earliest;

  friend bool operator==(const BootRecord&, const BootRecord&) = default;
};

/// What is to be kept once the kernel gave `current` for the boot of this id: the earlier of the
/// two times of one boot, else the new one.
BootRecord earliestBootRecord(std::optional<BootRecord> kept, const std::string& bootID,
                              Date current);

}  // namespace tidemar
