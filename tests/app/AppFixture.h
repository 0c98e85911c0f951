// The program in its installation with a clock that stands, and what a user does and sees there.
#pragma once

#include "platform/Clock.h"
#include "tests/support/ProgramTest.h"

#include <functional>

namespace korlan::test {

extern std::vector<CalendarDate> clockReadings; // handed out one a reading; the last one stays

class AppTest : public ProgramTest {
protected:
    AppTest();
    ~AppTest() override { ResetDesktop(); }

    // Runs it; true when it ended the process.
    static bool Ends(const std::function<void()>& action);
    // Texts of the boxes shown so far, each of which must have the installation's name as its title.
    static std::vector<std::string> BoxTexts();
    // The four values of the reminder, in the order LiveUpd, NoUpdt, LiveDay, NxtLiveDay; "-" for one that is missing.
    static std::string Reminder();
    void WriteIni(const std::string& text) const { drive.Write("KORLAN\\SYS\\TESSARY.INI", text); }
    std::string Ini() const { return drive.Read("KORLAN\\SYS\\TESSARY.INI"); }
};

} // namespace korlan::test
