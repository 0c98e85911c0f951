#include "app/ReminderSchedule.h"

#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"

#include <chrono>

namespace korlan {

namespace {

void Store(const char* key, const std::string& value) {
    RegistryWrite(kSettingsApplication, kSettingsSection, key, value);
}

// Day first, whatever the user's regional settings are. Each part is read from the clock anew.
std::string DateTextBeforeToday(std::int32_t days) {
    std::string text = DecimalText(DateBefore(Today(), days).day);
    text += "/" + DecimalText(DateBefore(Today(), days).month);
    text += "/" + DecimalText(DateBefore(Today(), days).year);
    return text;
}

void StoreBookkeeping(const char* noUpdates) {
    Store("NoUpdt", noUpdates);
    Store("LiveDay", "0");
    Store("NxtLiveDay", "0");
}

} // namespace

CalendarDate DateBefore(const CalendarDate& date, std::int32_t days) {
    using namespace std::chrono;
    const sys_days day =
        year{date.year} / month{static_cast<unsigned>(date.month)} / std::chrono::day{static_cast<unsigned>(date.day)};
    const year_month_day earlier{day - std::chrono::days{days}};
    return {static_cast<int>(earlier.year()), static_cast<std::int32_t>(static_cast<unsigned>(earlier.month())),
            static_cast<std::int32_t>(static_cast<unsigned>(earlier.day()))};
}

// The suite reminds 30 days after "LiveUpd", so a date 15 days in the past makes it 15.
void SaveReminderChoice() {
    if (frmUpdate.Option2.Value()) {
        Store("LiveUpd", DateTextBeforeToday(15));
        StoreBookkeeping("0");
    } else if (frmUpdate.Option3.Value()) {
        Store("LiveUpd", DateTextBeforeToday(0));
        StoreBookkeeping("0");
    } else if (frmUpdate.Option4.Value()) {
        StoreBookkeeping("1");
    }
}

} // namespace korlan
