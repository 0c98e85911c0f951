#include "tests/app/AppFixture.h"

#include "platform/SettingsStore.h"

namespace korlan::test {

std::vector<CalendarDate> clockReadings;

AppTest::AppTest() {
    clockReadings = {{2026, 1, 10}};
    drive.Write("KORLAN\\KlnUpdt.EXE", "the program");
}

bool AppTest::Ends(const std::function<void()>& action) {
    try {
        action();
        return false;
    } catch (const ProcessEnded&) {
        return true;
    }
}

std::vector<std::string> AppTest::BoxTexts() {
    std::vector<std::string> texts;
    for (const ShownBox& box : Desktop().boxes) {
        EXPECT_EQ(box.title, Suite.SysName) << box.text;
        texts.push_back(box.text);
    }
    return texts;
}

std::string AppTest::Reminder() {
    std::string values;
    for (const char* key : {"LiveUpd", "NoUpdt", "LiveDay", "NxtLiveDay"})
        values += (values.empty() ? "" : " ") + GetSetting(kSettingsApplication, kSettingsSection, key, "-");
    return values;
}

} // namespace korlan::test

namespace korlan {

CalendarDate Today() {
    std::vector<CalendarDate>& readings = test::clockReadings;
    const CalendarDate today = readings.front();
    if (readings.size() > 1) readings.erase(readings.begin());
    return today;
}

} // namespace korlan
