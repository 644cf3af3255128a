#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Locale/Calendar.h"
#include "TidemarKit/FolderReport.h"

namespace tidemar {

/// What the user is told of one folder: what goes tomorrow.
struct TomorrowNotification {
  std::string identifier;  ///< "tomorrow.{folder id}"
  std::string title;       ///< The folder's name.
  std::string body;

  friend bool operator==(const TomorrowNotification&, const TomorrowNotification&) = default;
};

/// The folder's notification; none where nothing goes on the user's tomorrow or where the folder
/// has no row id or couldn't be read.
std::optional<TomorrowNotification> tomorrowNotification(const FolderReport& report, Date now,
                                                         const Calendar& calendar,
                                                         const std::string& bin);

/// The row id of the folder that a notification of this identifier is about; none for another's.
std::optional<std::int64_t> folderOfNotification(std::string_view identifier);

/// False where nothing of the folder goes tomorrow in any time zone. Needs no calendar: what one
/// reads of time zones stays in memory, and a program without a window has no other use for it.
bool mayGoTomorrow(const FolderReport& report, Date now);

/// The key under which the day of a notification's last delivery is remembered.
std::string notificationStampKey(const std::string& identifier);

/// That day as "2026-11-18": UTC's day, not the user's.
std::string notificationStamp(Date now);

}  // namespace tidemar
