#include "platform/Clock.h"

#include <ctime>

namespace korlan {

CalendarDate Today() {
    tzset(); // the zone may have changed since the program started
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

} // namespace korlan
