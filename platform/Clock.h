// Today's date in the user's time zone.
#pragma once

#include <cstdint>

namespace korlan {

struct CalendarDate {
    std::int32_t year;  // 1 to 9999
    std::int32_t month; // 1 to 12
    std::int32_t day;   // 1 to 31
};

CalendarDate Today();

} // namespace korlan
