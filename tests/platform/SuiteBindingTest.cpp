// Binding by name at first use; a program of its own, because a library once found stays.
#include "platform/SuiteLibrary.h"

#include "tests/support/Failing.h"
#include "tests/support/SuitePlace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace korlan::test {

// In a process of its own, which has bound nothing yet.
TEST(SuiteBindingDeathTest, TheIniFileIsNamedBesideTheLibrary) {
    const TempDrive drive;
    Process().programPath = "C:\\Korlan\\KlnUpdt.exe";
    drive.MakeFolders("Korlan");
    std::filesystem::copy_file(KLN_SUITE_SO, drive.HostPathOf("Korlan/" KLN_SUITE_LIBRARY),
                               std::filesystem::copy_options::overwrite_existing);
    const auto iniFile = [] {
        std::cerr << '<' << E_GetString("IniFile") << '>';
        std::_Exit(0);
    };
    EXPECT_EXIT(iniFile(), testing::ExitedWithCode(0), "<>");
    EXPECT_EXIT(std::_Exit(CanGetPartInfo() ? 0 : 1), testing::ExitedWithCode(0), "");
    drive.Write("Korlan/IniFile.txt", "D:\\ALL\\TESSARY.INI\nmore");
    EXPECT_EXIT(iniFile(), testing::ExitedWithCode(0), "<D:.ALL.TESSARY.INI>");
}

TEST(SuiteBinding, WhatIsMissingIsToldAtTheCall) {
    const TempDrive drive;
    Process().programPath = "C:\\KlnUpdt.exe";
    const auto set = [] { E_SetString("ServerPath", "C:\\"); };
    EXPECT_EQ(ErrorOf(set), kErrFileNotFound) << "no library";
    EXPECT_FALSE(CanGetPartInfo());
    drive.Write(KLN_SUITE_LIBRARY, "MZ, and nothing behind it");
    EXPECT_EQ(ErrorOf(set), kErrFileNotFound) << "no shared object";
    UseSuite(drive, KLN_PARTIAL_SUITE_SO);
    {
        const ScopedVariable other("KLN_SUITE_TEST_VERSION", "2");
        EXPECT_EQ(ErrorOf(set), kErrFileNotFound) << "records may differ";
    }
    EXPECT_EQ(ErrorOf(set), 0);
    EXPECT_FALSE(CanGetPartInfo());
    for (int time = 1; time <= 2; ++time) {
        EXPECT_EQ(ErrorOf([] { E_GetString("IniFile"); }), kErrNoLibraryEntry);
        EXPECT_EQ(ErrorOf([] { E_OpenLibrary("C:\\A.PART", kPartLibraryType, 0); }), kErrNoLibraryEntry);
    }
}

} // namespace korlan::test
