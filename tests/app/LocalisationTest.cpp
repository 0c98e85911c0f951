#include "app/base/LocalText.h"
#include "app/localise/UpdtFONT.h"
#include "platform/TextLibrary.h"
#include "tests/app/AppFixture.h"

namespace korlan::test {
namespace {

using LocalisationTest = AppTest;

TEST_F(LocalisationTest, ALocalTextKeepsTheOuterBlanksOfTheDefault) {
    drive.Write("KLNLOCAL.TXT", "4925 = Schliessen\r\n991870 =  vor dem Start  \r\n327 = Weiter\r\n");
    L32_Object_Create("C:\\KLNLOCAL.TXT");
    EXPECT_EQ(GetLocalText("Close ", "4925"), "Schliessen ");
    EXPECT_EQ(GetLocalText(" before running Live Update", "991870"), " vor dem Start");
    for (const char* identifier : {"12345", "Next", "", "99999999999"})
        EXPECT_EQ(GetLocalText(" unknown ", identifier), " unknown ") << identifier;
}

TEST_F(LocalisationTest, TheCountryTableChoosesTheLanguageFolder) {
    const std::string both = "\r\n1=English,EN,1\r\n2=Deutsch,GERMAN,1031";
    const std::pair<std::string, const char*> rows[] = {
        {"", "English"},
        {"Number=2\r\nDefault= 2 , 7" + both, "GERMAN"},
        {"Number=2" + both, "EN"},                              // no "Default"
        {"Number=2\r\nDefault=2\r\n1=English,EN,1", "English"}, // entry 2 is missing
        {"Number=1\r\nDefault=1\r\n1=Deutsch", "English"},      // without a folder
        {"Number=12\r\nDefault=12,7\r\n12=Deutsch", "English"},
        {"Number=2000000000\r\nDefault=2,7\r\n2=Deutsch,GERMAN,1031", "GERMAN"},
    };
    for (const auto& [section, folder] : rows) {
        WriteIni("[COUNTRY]\r\n" + section + "\r\n");
        LoadLocalisation();
        EXPECT_EQ(Language.languagePath, std::string("C:\\KORLAN\\COUNTRY\\") + folder) << section;
    }
}

TEST_F(LocalisationTest, TheFormIsDressedInTextsAndFonts) {
    WriteIni("[COUNTRY]\r\n1=Deutsch,GERMAN,1\r\n");
    drive.Write("KORLAN\\COUNTRY\\GERMAN\\KLNLOCAL.TXT", "9989 = A&ktualisieren\r\n991867 = Aktualisierung\r\n");
    drive.Write("KORLAN\\COUNTRY\\GERMAN\\KLW32VFONT.EVF",
                "[Font]\r\nName=Verdana\r\nSize=6\r\nCharSet=238\r\n[HeadFont]\r\nSize=36\r\nCharSet=-4\r\nBold=0\r\n"
                "[ControlFont]\r\nName=  \r\nSize=37\r\nBold=1\r\n");
    Desktop().charset = 204;
    LoadLocalisation();
    EXPECT_EQ(frmUpdate.cmdUpdate.Caption(), "A&ktualisieren");
    EXPECT_EQ(frmUpdate.form.Caption(), " Aktualisierung");
    EXPECT_EQ(frmUpdate.lblMsgline.Font(), (FontSpec{"Verdana", 6, 238, false}));
    EXPECT_EQ(frmUpdate.lblMainHead.Font(), (FontSpec{"Arial", 36, 0, false}));
    EXPECT_EQ(frmUpdate.cmdCancel.Font(), (FontSpec{"MS Sans Serif", 9, 204, true}));

    WriteIni(""); // and back to English without any file
    LoadLocalisation();
    EXPECT_EQ(Language.countries.entries[1].number, 65535);
    EXPECT_EQ(frmUpdate.cmdUpdate.Caption(), "&Update");
    EXPECT_EQ(frmUpdate.lblUpdate.Font(), (FontSpec{"MS Sans Serif", 9, 204, false}));
}

} // namespace
} // namespace korlan::test
