#include "tests/app/AppFixture.h"

korlan::CalendarDate korlan::Today() {
    const CalendarDate today = test::clockReadings.front();
    if (test::clockReadings.size() > 1) test::clockReadings.erase(test::clockReadings.begin());
    return today;
}
