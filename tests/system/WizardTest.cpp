#include "tests/system/WizardFixture.h"

#include <gmock/gmock.h>

#include <regex>

namespace korlan {
namespace {

namespace fs = std::filesystem;
using WizardTest = test::WizardFixture;

TEST_F(WizardTest, FromTheSearchToAnUpdatedInstallation) {
    ASSERT_EQ(sample.Compare("snapshot"), 0);
    Start();
    EXPECT_EQ(frmUpdate.WizardState, 0);
    EXPECT_EQ(frmUpdate.IsBusy, 0);
    EXPECT_GT(frmUpdate.lvwFilesList.Count(), 20);
    EXPECT_TRUE(Find<QAbstractItemView>("lvwFilesList")->isVisible());

    Toggle("KLNLOCAL.TXT"); // a language's file takes the program's own files along
    EXPECT_FALSE(Checked("TESSARY.EXE"));
    EXPECT_TRUE(Checked("SUBCIR.IDX"));
    Toggle("TESSARY.EXE");
    EXPECT_TRUE(Checked("KLNLOCAL.TXT"));
    for (std::int32_t row = 1; row <= frmUpdate.lvwFilesList.Count(); ++row)
        EXPECT_TRUE(frmUpdate.lvwFilesList.Row(row).checked) << frmUpdate.lvwFilesList.Row(row).text;

    const fs::path third = sample.Served() / "KLWUPDTDOTTDLL.zip";
    fs::rename(third, third.string() + ".gone");
    Press("cmdUpdate");
    ASSERT_EQ(people.boxes.size(), 1u);
    EXPECT_EQ(people.boxes[0], "File Not Found : " + Settings.UpdateUrl + "/KLWUPDTDOTTDLL.zip");
    EXPECT_TRUE(Find<QPushButton>("CmdRetry")->isVisible());
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "LiveUpdate Failed.Click Retry to try again");
    EXPECT_EQ(frmUpdate.IsBusy, 1);
    EXPECT_EQ(sample.Ini().find("LIVEUPDATEFROMWEB"), std::string::npos);

    fs::rename(third.string() + ".gone", third);
    Press("CmdRetry");
    EXPECT_EQ(Caption("cmdCancel"), "Next");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update completed Successfully");
    EXPECT_EQ(frmUpdate.WizardState, 2);

    Press("cmdCancel");
    EXPECT_EQ(Caption("cmdCancel"), "Finish");
    EXPECT_TRUE(Find<QRadioButton>("Option2")->isChecked());
    EXPECT_FALSE(Find<QAbstractItemView>("lvwFilesList")->isVisible());
    EXPECT_TRUE(Ends("cmdCancel"));
    EXPECT_EQ(sample.Compare("report"), 0);
    for (const char* line :
         {" starts", "program C:\\KORLAN\\KlnUpdt.EXE", "suite version 1.61", "here missing, server ",
          "failed C:\\KORLAN\\KLWUPDT.DLL", "TESSARY.INI: server http", "pack SP3.mdb: 12 files",
          "marked C:\\KORLAN\\TESSARY.EXE: here ", "shown: a list of ", "update of ", "KLWUPDTDOTTDLL.zip: status 404",
          "box: File Not Found : ", "shown: LiveUpdate Failed", "retry", "installed C:\\KORLAN\\TESSARY.EXE",
          "index: without the parts of TTL74.PART", "shown: Live Update completed", "ends: by the button Finish"})
        EXPECT_TRUE(sample.Logged(line)) << line;

    Start(); // every pack is recorded: nothing is fetched
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found");
    EXPECT_EQ(frmUpdate.WizardState, 1);
    EXPECT_EQ(Caption("cmdCancel"), "Finish");
    EXPECT_EQ(people.boxes.size(), 1u);
}

class PublishedTest : public test::WizardFixture {
protected:
    PublishedTest() : WizardFixture("--publish") {}
};

TEST_F(PublishedTest, WhatThePublisherOffersIsInstalled) {
    ASSERT_EQ(sample.Compare("snapshot"), 0);
    Start();
    Press("cmdUpdate");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update completed Successfully");
    EXPECT_EQ(sample.Compare("report"), 0);
    ForgetAppliedPacks();
    Start();
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found");
    EXPECT_TRUE(people.boxes.empty());
}

TEST_F(WizardTest, ASecondSearchOverTheSameCatalogueFindsNothingInAnyTimeZone) {
    const test::ScopedVariable east("TZ", "Australia/Sydney");
    tzset();
    Start();
    Press("cmdUpdate");
    EXPECT_EQ(Caption("cmdCancel"), "Next");
    for (const char* zone : {"Australia/Sydney", "America/Los_Angeles", "Asia/Kolkata", "UTC"}) {
        const test::ScopedVariable here("TZ", zone);
        tzset();
        ForgetAppliedPacks();
        Start();
        EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found") << zone;
        EXPECT_EQ(frmUpdate.lvwFilesList.Count(), 0) << zone;
    }
    EXPECT_TRUE(people.boxes.empty());
}

// A wrong number shows another text, or English, to whoever has another language.
TEST(Sources, EachTextsNumberStandsInTheGermanSampleAndEachTrapLeavesATrace) {
    const auto read = [](const fs::path& path) {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string german = read(fs::path(KLN_SOURCE) / "sample/installation/COUNTRY/GERMAN/KLNLOCAL.TXT");
    const std::regex numbered("\"\\s*,\\s*\"([2-9]|\\d{3,6})\"");
    // A trap that neither logs nor shows nor passes on leaves the maintainer without a trace.
    const std::regex silent("catch \\(const RuntimeError& error\\) \\{(?![^}]*(LogTrapped\\(|throw;|ShowMsgBox\\())");
    std::size_t found = 0;
    for (const char* folder : {"app", "catalogue", "transfer", "library"})
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(KLN_SOURCE) / folder)) {
            const std::string source = entry.is_regular_file() ? read(entry.path()) : "";
            EXPECT_FALSE(std::regex_search(source, silent)) << entry.path();
            for (std::sregex_iterator match(source.begin(), source.end(), numbered), end; match != end;
                 ++match, ++found)
                EXPECT_THAT(german, testing::HasSubstr("\n" + match->str(1) + " = ")) << entry.path();
        }
    EXPECT_GT(found, 90u);
}

} // namespace
} // namespace korlan
