#include "app/base/Settings.h"

#include "app/base/Paths.h"
#include "platform/RuntimeError.h"
#include "tests/app/AppFixture.h"

namespace korlan::test {
namespace {

using SettingsTest = AppTest;

TEST_F(SettingsTest, FolderDefaultsFollowTheConfiguredName) {
    Settings.IniFilePath = "C:\\nowhere\\TESSARY.INI";
    ReadSuiteSettings();
    EXPECT_EQ(Settings.SysName + " " + Settings.JobDir + " " + Settings.KDSwrk,
              "Korlan C:\\Korlan\\JOB C:\\Korlan\\KDS_WRK");
    EXPECT_EQ(Settings.UpdateUrl, "//http://update.korlan.invalid/Updates/Korlan/161");
    Settings.IniFilePath = "C:\\KORLAN\\SYS\\TESSARY.INI";
    WriteIni("[Tessary]\r\nSysName=Board Lab\r\nSysDir=D:\\S\\\r\n[WEB]\r\nUPDATEONLINE=  \" http://u/x \"\r\n");
    ReadSuiteSettings();
    EXPECT_EQ(GetSysName() + " " + Settings.LibDir, "Board Lab C:\\Board Lab\\LIB");
    EXPECT_EQ(Settings.SysDir, "D:\\S\\") << "taken as it stands";
    EXPECT_EQ(Settings.UpdateUrl, "http://u/x");
}

TEST_F(SettingsTest, AFailedWriteShowsItsWarning) {
    std::int32_t failed = 7;
    WriteIniString("Tessary", "Ver", "1.61", failed);
    EXPECT_EQ(ReadIniString("TESSARY", "VER", "?") + std::to_string(failed), "1.610");
    Settings.IniFilePath = "C:\\nowhere\\TESSARY.INI";
    WriteIniString("Tessary", "Ver", "1.62", failed);
    EXPECT_EQ(failed, 1);
    ASSERT_EQ(BoxTexts().size(), 1U);
    const std::string text = BoxTexts()[0]; // the system's description comes behind
    EXPECT_TRUE(text.starts_with("Can't create/write to file: C:\\nowhere\\TESSARY.INI\n") && text.size() > 53) << text;
}

TEST_F(SettingsTest, DesignationsBecomeInstallationFolders) {
    WriteIni("[Tessary]\r\nLibDir=D:\\Parts\r\nJobDir=1\r\nSysDir=2\r\nKDScml=3\r\nKDSudn=4\r\nKDSmod=5\r\nKDSsbk=6\r\n"
             "KDSwrk=7\r\n");
    ReadSuiteSettings();
    const auto folderOf = [](const std::string& designation) {
        std::string folder;
        try {
            GetKorlanFilePath(designation, folder);
        } catch (const RuntimeError& error) {
            return std::to_string(error.Number()) + folder;
        }
        return folder;
    };
    EXPECT_EQ(folderOf("\\LIB"), "D:\\Parts");
    std::string all;
    for (const char* code : {"JOB", "SYS", "KDS_CML", "KDS_UDN", "KDS_MOD", "KDS_SBK", "KDS_WRK"})
        all += folderOf(std::string("\\") + code);
    EXPECT_EQ(all, "1234567");
    EXPECT_EQ(folderOf("\\lib\\user\\a"), "D:\\Parts\\USER\\A");
    EXPECT_EQ(folderOf("\\LIBRARY") + folderOf("\\"), "C:\\KORLAN\\LIBRARYC:\\KORLAN\\");
    EXPECT_EQ(folderOf("\\Help\\ROOT"), "C:\\KORLAN\\Help\\ROOT");
    EXPECT_EQ(folderOf("ROOT"), "9");
    for (const char* designation : {"\\LIB\\..\\..\\Windows", "\\LIB\\.. \\x", "\\LIB\\..../x", "\\D:\\x", "2\\x"})
        EXPECT_EQ(folderOf(designation), "76") << designation;
}

TEST_F(SettingsTest, FoldersEndInOneBackslash) {
    for (std::string folder : {"C:\\X", " C:\\X\\ "}) {
        AddBackslash(folder);
        EXPECT_EQ(folder, "C:\\X\\");
    }
}

TEST_F(SettingsTest, BareNamesHoldNoFolder) {
    for (const char* name : {"a\\b", "a/b", "..", "C:x", "a\r\n1=b.SYMBOL"}) EXPECT_FALSE(IsBareName(name)) << name;
}

} // namespace
} // namespace korlan::test
