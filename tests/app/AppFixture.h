// The program in its installation with a clock that stands, and what a user does and sees there.
#pragma once

#include "platform/Clock.h"
#include "platform/SettingsStore.h"
#include "tests/support/ProgramTest.h"

namespace korlan::test {

inline std::vector<CalendarDate> clockReadings; // handed out one a reading; the last one stays

class AppTest : public ProgramTest {
protected:
    AppTest() {
        clockReadings = {{2026, 1, 10}};
        drive.Write("KORLAN\\KlnUpdt.EXE", "the program");
    }
    ~AppTest() override { ResetDesktop(); }

    // Runs it; true when it ended the process.
    static bool Ends(const std::function<void()>& action) try {
        action();
        return false;
    } catch (const ProcessEnded&) {
        return true;
    }
    // Texts of the boxes shown so far, each of which must have the installation's name as its title.
    static std::vector<std::string> BoxTexts() {
        std::vector<std::string> texts;
        for (const ShownBox& box : Desktop().boxes) {
            EXPECT_EQ(box.title, Settings.SysName) << box.text;
            texts.push_back(box.text);
        }
        return texts;
    }
    // The four values of the reminder, in the order LiveUpd, NoUpdt, LiveDay, NxtLiveDay; "-" for one that is missing.
    static std::string Reminder() {
        const auto value = [](const char* key) { return GetSetting(kSettingsApplication, kSettingsSection, key, "-"); };
        return value("LiveUpd") + " " + value("NoUpdt") + " " + value("LiveDay") + " " + value("NxtLiveDay");
    }
    void WriteIni(const std::string& text) const { drive.Write("KORLAN\\SYS\\TESSARY.INI", text); }
    std::string Ini() const { return drive.Read("KORLAN\\SYS\\TESSARY.INI"); }
};

} // namespace korlan::test
