// Binding by name at first use; a program of its own, because a library once found stays.
#include "platform/SuiteLibrary.h"

#include "tests/support/Failing.h"
#include "tests/support/ScriptedProcess.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace korlan::test {

TEST(SuiteBinding, WhatIsMissingIsToldAtTheCall) {
    const TempDrive drive;
    TheProcess().programPath = "C:\\KlnUpdt.exe";
    const auto set = [] { E_SetString("ServerPath", "C:\\"); };
    EXPECT_EQ(ErrorOf(set), kErrFileNotFound) << "no library";
    drive.Write("libklwupdt.so", "MZ, a file of another system");
    EXPECT_EQ(ErrorOf(set), kErrFileNotFound) << "no shared object";
    std::filesystem::remove(drive.HostPathOf("libklwupdt.so"));
    std::filesystem::create_symlink(KLN_PARTIAL_SUITE_SO, drive.HostPathOf("libklwupdt.so"));
    EXPECT_EQ(ErrorOf(set), 0);
    for (int time = 1; time <= 2; ++time) {
        EXPECT_EQ(ErrorOf([] { E_GetString("IniFile"); }), kErrNoLibraryEntry);
        EXPECT_EQ(ErrorOf([] { E_OpenLibrary("C:\\A.PART", kPartLibraryType, 0); }), kErrNoLibraryEntry);
    }
}

} // namespace korlan::test
