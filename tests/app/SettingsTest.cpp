#include "app/Settings.h"

#include "app/Paths.h"
#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "tests/app/AppFixture.h"

namespace korlan::test {
namespace {

using Settings = AppTest;

TEST_F(Settings, EveryKeyHasItsDefault) {
    WriteIni("");
    ReadSuiteSettings();
    EXPECT_EQ(Suite.SysName, "Korlan");
    EXPECT_EQ(Suite.LibDir, "C:\\Korlan\\LIB");
    EXPECT_EQ(Suite.KDSwrk, "C:\\Korlan\\KDS_WRK");
    EXPECT_TRUE(Suite.UpdateUrl.starts_with("//http://") && Suite.UpdateUrl.ends_with("/Updates/Korlan/161"))
        << Suite.UpdateUrl;

    Suite.IniFilePath = "C:\\nowhere\\TESSARY.INI";
    ReadSuiteSettings();
    EXPECT_EQ(Suite.JobDir, "C:\\Korlan\\JOB");
}

TEST_F(Settings, FolderDefaultsFollowTheConfiguredName) {
    WriteIni("[Tessary]\r\nSysName=Board Lab\r\nSysDir=D:\\S\\\r\n[WEB]\r\nUPDATEONLINE=  \" http://u/x \"\r\n");
    ReadSuiteSettings();
    EXPECT_EQ(GetSysName(), "Board Lab");
    EXPECT_EQ(Suite.LibDir, "C:\\Board Lab\\LIB");
    EXPECT_EQ(Suite.SysDir, "D:\\S\\") << "taken as it stands";
    EXPECT_EQ(Suite.UpdateUrl, "http://u/x");
}

TEST_F(Settings, AFailedWriteShowsItsWarning) {
    std::int32_t failed = 7;
    WriteIniString("Tessary", "Ver", "1.61", failed);
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(ReadIniString("TESSARY", "VER", "?"), "1.61");
    EXPECT_TRUE(Desktop().boxes.empty());

    Suite.IniFilePath = "C:\\nowhere\\TESSARY.INI";
    WriteIniString("Tessary", "Ver", "1.62", failed);
    EXPECT_EQ(failed, 1);
    ASSERT_EQ(BoxTexts().size(), 1U);
    EXPECT_TRUE(BoxTexts()[0].starts_with("Can't create/write to file: C:\\nowhere\\TESSARY.INI\n")) << BoxTexts()[0];
    EXPECT_GT(BoxTexts()[0].size(), 53U) << "the system's description is missing: " << BoxTexts()[0];
    EXPECT_EQ(Desktop().boxes[0].style, kBoxExclamation);
}

TEST_F(Settings, DesignationsBecomeInstallationFolders) {
    WriteIni("[Tessary]\r\nLibDir=D:\\Parts\r\nKDScml=E:\\cml\r\n");
    ReadSuiteSettings();
    const struct {
        std::string designation, folder;
        std::int32_t error;
    } rows[] = {
        {"\\LIB", "D:\\Parts", 0},
        {"\\lib\\user\\a", "D:\\Parts\\USER\\A", 0},
        {"\\KDS_CML\\x", "E:\\cml\\X", 0},
        {"\\Help\\en", "C:\\KORLAN\\Help\\en", 0},
        {"\\LIBRARY", "C:\\KORLAN\\LIBRARY", 0},
        {"\\", "C:\\KORLAN\\", 0},
        {"ROOT", "", 9},
        {"", "", 9},
        {"\\LIB\\..\\..\\Windows", "", 76},
        {"\\LIB\\.. \\x", "", 76},
        {"\\LIB\\..../x", "", 76},
        {"\\x/../y", "", 76},
        {"\\D:\\x", "", 76},
        {std::string("\\LIB\\a\0b", 8), "", 76},
    };
    for (const auto& row : rows) {
        std::string folder;
        std::int32_t error = 0;
        try {
            GetKorlanFilePath(row.designation, folder);
        } catch (const RuntimeError& raised) {
            error = raised.Number();
        }
        EXPECT_EQ(error, row.error) << row.designation;
        EXPECT_EQ(folder, row.folder) << row.designation;
    }
}

TEST_F(Settings, BareNamesHoldNoFolder) {
    for (const char* name : {"a\\b", "a/b", "..", "C:x", "a\r\n1=b.SYMBOL"})
        EXPECT_THROW(RequireBareName(name), RuntimeError) << name;
    for (const char* name : {"A..B.C", "PARTS.ZIP", "..a"}) EXPECT_NO_THROW(RequireBareName(name)) << name;
}

TEST_F(Settings, ProgramFolderAndTemporaryFolder) {
    EXPECT_EQ(GetAppFolder(), "C:\\KORLAN");
    Process().programPath = "C:\\KlnUpdt.EXE";
    EXPECT_EQ(GetAppFolder(), "C:");
    Process().programPath = "C:\\Missing Place\\KlnUpdt.EXE";
    const std::string before = CurrentFolder();
    SetTempFolder();
    EXPECT_EQ(Suite.TempFolder, "C:\\Missing Place\\Temp");
    EXPECT_EQ(CurrentFolder(), before);
    EXPECT_TRUE(Desktop().boxes.empty());

    for (auto [path, expected] : {std::pair{" D:\\X ", "D:\\X\\"}, {"D:\\X\\", "D:\\X\\"}, {"  ", "\\"}}) {
        std::string text = path;
        AddBackslash(text);
        EXPECT_EQ(text, expected);
    }
}

} // namespace
} // namespace korlan::test
