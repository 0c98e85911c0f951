#include "app/ReminderSchedule.h"

#include "tests/app/AppFixture.h"

namespace korlan::test {
namespace {

using ReminderSchedule = AppTest;

void Choose(OptionButton& option) {
    option.SetVisible(true);
    option.UserClick();
}

TEST_F(ReminderSchedule, FifteenDaysBackOverEveryKindOfEnd) {
    const std::pair<std::vector<CalendarDate>, const char*> rows[] = {
        {{{2026, 1, 10}}, "26/12/2025"}, {{{2026, 1, 15}}, "31/12/2025"}, {{{2026, 1, 16}}, "1/1/2026"},
        {{{2024, 3, 15}}, "29/2/2024"},  {{{2023, 3, 15}}, "28/2/2023"},  {{{1900, 3, 15}}, "28/2/1900"},
        {{{2000, 3, 15}}, "29/2/2000"},  {{{2026, 3, 5}}, "18/2/2026"},   {{{2026, 5, 9}}, "24/4/2026"}};
    Choose(frmUpdate.Option2);
    for (const auto& [today, stored] : rows) {
        clockReadings = today;
        SaveReminderChoice();
        EXPECT_EQ(Reminder(), std::string(stored) + " 0 0 0");
    }
}

TEST_F(ReminderSchedule, EachChoiceStoresItsValues) {
    SaveReminderChoice();
    EXPECT_EQ(Reminder(), "- - - -") << "no option selected";
    // Day, month and year are read apart: over midnight on New Year's Eve they come from two days.
    clockReadings = {{2026, 12, 31}, {2027, 1, 1}};
    Choose(frmUpdate.Option3);
    SaveReminderChoice();
    EXPECT_EQ(Reminder(), "31/1/2027 0 0 0");
    Choose(frmUpdate.Option4);
    SaveReminderChoice();
    EXPECT_EQ(Reminder(), "31/1/2027 1 0 0") << "turning off leaves the date";
}

} // namespace
} // namespace korlan::test
