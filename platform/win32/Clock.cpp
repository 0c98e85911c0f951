#include "platform/Clock.h"

#include <windows.h>

namespace korlan {

CalendarDate Today() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay};
}

} // namespace korlan
