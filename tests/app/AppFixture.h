// What every test of the program's logic starts from: an installation in C:\Korlan on a drive of its own, nobody at the
// desktop, no program started, and a clock that stands.
#pragma once

#include "app/Settings.h"
#include "app/frmUpdate.h"
#include "platform/Clock.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/ScriptedProcess.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace korlan::test {

extern std::vector<CalendarDate> clockReadings; // handed out one a reading; the last one stays

class AppTest : public ::testing::Test {
protected:
    AppTest();
    // Texts of a box that has the installation's name as its title.
    static std::vector<std::string> BoxTexts();
    void WriteIni(const std::string& text) const { drive.Write("Korlan\\SYS\\TESSARY.INI", text); }
    std::string Ini() const { return drive.Read("Korlan\\SYS\\TESSARY.INI"); }
    // The four values of the reminder, in the order LiveUpd, NoUpdt, LiveDay, NxtLiveDay; "-" for one that is missing.
    static std::string Reminder();

    TempDrive drive;
};

} // namespace korlan::test
