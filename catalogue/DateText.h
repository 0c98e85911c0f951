// Time stamps as text: day-month-year, comma, hour:minute:second (5-3-2004,9:7:12), in UTC, written without leading
// zeros. Read with leading zeros and blanks around a component. Seconds are carried and never compared.
#pragma once

#include "platform/FileSystem.h"

#include <cstdint>
#include <string>

namespace korlan {

std::string DateText(const CalendarTime& time);

// result = 1 when `date1` is earlier than `date2` by year, month, day, hour and minute, else 0. Equal texts are not
// parsed. No trap of its own: a text of less than three characters raises 5, one with a piece too few 9, a piece that
// is no number 13; after the last two result holds whether the texts without their last three characters differ.
void CompareDates(const std::string& date1, const std::string& date2, std::int32_t& result);

} // namespace korlan
