// The reminder choice of the wizard's last page, stored for the suite, which decides by it when to start this program.
#pragma once

#include "platform/Clock.h"

namespace korlan {

// The date `days` days before `date` (days from 0 on).
CalendarDate DateBefore(const CalendarDate& date, std::int32_t days);

// Stores the choice of the option buttons; no option selected (the page was never shown) stores nothing.
void SaveReminderChoice();

} // namespace korlan
