#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "Platform/Locale/Calendar.h"
#include "TidemarKit/Engine/FolderStatus.h"

namespace tidemar {

/// How many upcoming items of these folders go on the day at this `dayDistance`, those that are due
/// anyway left out. No status is null.
std::int64_t countOnDay(std::int64_t distance, std::span<const FolderStatus* const> statuses,
                        Date now, const Calendar& calendar);

/// What goes next out of all folders: the first of now, today and tomorrow with any item.
/// `countOnDay` gives the number of items at a `dayDistance`.
std::string forecastHeadline(std::int64_t dueNowCount,
                             const std::function<std::int64_t(std::int64_t)>& countOnDay);

/// What goes out of one folder this week. `count` is the number of items in its forecast outside of
/// the restart's groups.
std::string previewHeadline(const FolderStatus& status, std::int64_t count, Date now,
                            const Calendar& calendar);

}  // namespace tidemar
