// Time stamps as text: day-month-year, comma, hour:minute:second (5-3-2004,9:7:12), in UTC, written without leading
// zeros. Read with leading zeros and blanks around a component. Seconds are carried and never compared.
#pragma once

#include "platform/FileSystem.h"

#include <cstdint>
#include <string>

namespace korlan {

std::string DateText(const CalendarTime& time);

// True when `date1` is earlier than `date2` by year, month, day, hour and minute. A text with fewer pieces raises 9, a
// piece that is no number 13.
bool IsEarlier(const std::string& date1, const std::string& date2);

// True when the texts without their last three characters differ. A text shorter than that raises 5.
bool DiffersBeforeSeconds(const std::string& date1, const std::string& date2);

// result = 1 when `date1` is earlier than `date2`, else 0. Equal texts are not parsed. No trap of its own: a text that
// cannot be parsed raises, and result then holds whether the texts differ before the seconds.
void CompareDates(const std::string& date1, const std::string& date2, std::int32_t& result);

} // namespace korlan
