#include "app/base/Settings.h"
#include "app/localise/UpdtFONT.h"
#include "platform/SuiteLibrary.h"
#include "tests/app/SearchFixture.h"
#include "tests/support/ResetProgram.h"

#include <filesystem>

namespace korlan::test {
namespace {

using StartUp = SearchTest;

TEST_F(StartUp, TheOpenSuiteIsBroughtForwardAndTheProgramEnds) {
    WriteTextsOf({"4925", "991870"});
    WriteIni("[Tessary]\r\nSysName=Board Lab\r\n");
    Windows().titles = {"", "Board Lab Live Update", "board lab: x", " Board Lab: BOARD1 ", "Board Lab: BOARD2"};
    EXPECT_TRUE(Start());
    EXPECT_EQ(Desktop().boxes, (std::vector{ShownBox{"T4925 Board Lab T991870", kBoxCritical, "Board Lab"}}));
    EXPECT_EQ(Windows().touched, (std::vector<std::string>{"flash  Board Lab: BOARD1 ", "top  Board Lab: BOARD1 "}));
    EXPECT_FALSE(frmUpdate.form.Visible());
    EXPECT_EQ(Ini() + Reminder(), "[Tessary]\r\nSysName=Board Lab\r\n- - - -");
}

TEST_F(StartUp, TheWindowIsCompleteBeforeTheSearchBegins) {
    Process().commandLine = "\"/sys:C:\\Nowhere\""; // warned of, and the default is used
    OfferOneFile();
    std::string shown, searching;
    const auto stale = drive.Top() / "cache/korlan/klnupdt/stale";
    std::filesystem::create_directories(stale);
    Desktop().onControlChanged = [&](const Control& control, Aspect aspect, std::int32_t) {
        if (&control != &frmUpdate.form || aspect != Aspect::Visible || !frmUpdate.form.Visible()) return;
        shown = frmUpdate.form.Caption() + "|" + frmUpdate.lblMainHead.Caption() + "|" + State();
        EXPECT_EQ(frmUpdate.form.Left() + frmUpdate.form.Top(), 4440) << "centred";
        EXPECT_EQ(Flags.StatusSpinner, "|");
        EXPECT_FALSE(frmUpdate.lvwFilesList.Visible() || frmUpdate.LblLive.Visible() || frmUpdate.Option4.Visible());
        EXPECT_TRUE(server.Targets().empty() && Desktop().pointers.empty());
    };
    Desktop().onDoEvents = [&] {
        if (!searching.empty()) return;
        searching = Flags.StatusSpinner + State();
        EXPECT_FALSE(std::filesystem::exists(stale)) << "the cache is emptied before";
        EXPECT_EQ(Desktop().pointers, std::vector{MousePointer::Hourglass});
        EXPECT_FALSE(CloseWindow()) << "refused during the search";
    };
    EXPECT_FALSE(Start());
    EXPECT_EQ(shown, "Korlan Live Update|Korlan Live Update|0 0: (&Update) C&ancel (&Help)");
    EXPECT_EQ(searching, "-0 1: (&Update) C&ancel (&Help)");
    EXPECT_EQ(State(), "0 0: &Update C&ancel &Help");
    EXPECT_EQ(Desktop().pointers, (std::vector{MousePointer::Hourglass, MousePointer::Default}));
    EXPECT_TRUE(frmUpdate.lvwFilesList.Visible() && !frmUpdate.LblLive.Visible());
}

TEST_F(StartUp, SearchesThatEndWithoutAList) {
    const std::string none = "1 0: Finish &Help No updates found";
    const struct {
        std::function<void()> publish; // each on top of those before it
        std::string state, recorded;
    } rows[] = {
        {[&] { PublishCatalogue("Update.mdb", {}); }, none, "-"},
        {[&] {
             std::filesystem::remove(drive.HostPathOf("Update.mdb"));
             OfferOneFile();
             drive.Write("KORLAN\\SYS\\NEW.TXT", "as new as can be");
             drive.Touch("KORLAN\\SYS\\NEW.TXT", 2044, 1, 1, 0, 0, 0);
         },
         none, "SP1.mdb"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        ResetProgram();
        row.publish();
        EXPECT_FALSE(Start());
        EXPECT_EQ(State() + " " + frmUpdate.lblUpdate.Caption(), row.state);
        EXPECT_EQ(ReadIniString("LIVEUPDATEFROMWEB", "1", "-"), row.recorded);
        EXPECT_EQ(frmUpdate.Option2.Caption() + frmUpdate.Option3.Caption() + frmUpdate.Option4.Caption(),
                  "Remind me after 15 daysRemind me after 30 daysTurn Off any future Live Updates");
        EXPECT_EQ(frmUpdate.LblOptionExplain.Caption(), "Run Live Update Program after 15 days");
        EXPECT_TRUE(Click(frmUpdate.cmdCancel));
        EXPECT_EQ(Reminder(), "26/12/2025 0 0 0");
    }
}

TEST_F(StartUp, AFailedFetchAfterCancelShowsNoPage) {
    server.Answer("/u/Update.mdb", {.status = 404});
    Desktop().onDoEvents = [] { Flags.CancelRequested = 1; };
    EXPECT_TRUE(Start());
    EXPECT_EQ(frmUpdate.WizardState, 0);
}

TEST_F(StartUp, ANewerBuildTakesOver) {
    PublishCatalogue("Update.mdb", {});
    drive.Touch("KORLAN\\KlnUpdt.EXE", 2004, 3, 5, 9, 7, 12);
    const auto search = [&](bool ends, bool launches, const std::string& note) {
        SCOPED_TRACE(note);
        ResetProgram();
        Process().started.clear();
        drive.Write("KORLAN\\Temp\\KlnUpdt.txt", "5-3-2044,9:8:0\r\nleft from an earlier search");
        drive.SetMode("KORLAN\\Temp\\KlnUpdt.txt", 0444);
        EXPECT_EQ(Start(), ends);
        std::vector<StartedProgram> expected;
        if (launches) expected.push_back({"C:\\KORLAN\\KLNUPSLF.EXE", WindowStyle::NormalFocus});
        EXPECT_EQ(Process().started, expected);
    };
    search(false, false, "no note on the server: the old one is not used");
    EXPECT_FALSE(drive.Exists("KORLAN\\Temp\\KlnUpdt.txt"));
    const auto found = [&](bool ends, bool launches, const std::vector<std::string>& notes) {
        for (const std::string& note : notes) {
            Publish("KlnUpdt.txt", note);
            search(ends, launches, note);
        }
    };
    found(true, true, {"5-3-2004,9:8:0\r\nsecond line", "05-03-2004,09:08:00\n"});
    found(false, false, {" 5-3-2004,9:7:12 ", "5-3-2004,9:7:59", "4-3-2004,23:59:0"}); // seconds do not count
    found(true, false, {"", "not found", "\r\n5-3-2005,0:0:0"});                       // no date: ends all the same
    EXPECT_EQ(Desktop().pointers.back(), MousePointer::Default);
}

TEST_F(StartUp, TheCompanionStartsAfterASuccessThatBroughtANewUpdater) {
    const std::string companion = "C:\\KORLAN\\KLNUPDTR.exe KEMO274";
    AttachHandlers();
    for (int row = 0; row < 5; ++row) { // in the last one it is not there, which keeps nobody
        SCOPED_TRACE(row);
        Process().started.clear();
        Flags.UpdateSucceeded = row & 1;
        Flags.NewUpdaterLoaded = row >> 1 & 1;
        if (row == 4) Flags.UpdateSucceeded = Flags.NewUpdaterLoaded = 1, Process().missing = {companion};
        frmUpdate.form.Show();
        EXPECT_TRUE(CloseWindow());
        EXPECT_EQ(Process().started.size(), row == 3 ? 1U : 0U);
    }
}

TEST_F(StartUp, HelpOpensTheCompiledFileAndClosesWithTheWindow) {
    EXPECT_FALSE(Start());
    EXPECT_EQ(State(), "1 0: &Close &Help");
    EXPECT_FALSE(Click(frmUpdate.cmdHelp));
    frmUpdate.IsBusy = 1;
    EXPECT_FALSE(CloseWindow());
    frmUpdate.IsBusy = 0;
    EXPECT_TRUE(CloseWindow());
    EXPECT_EQ(Desktop().helpCalls, (std::vector<HelpCall>{{"C:\\KORLAN\\KlnUpdt.chm", HelpCommand::DisplayTopic, 0},
                                                          {"", HelpCommand::CloseAll, 0}}));
}

TEST_F(StartUp, TheSuiteLibraryMayNameAnotherIniFile) {
    InitLibraryInterface();
    EXPECT_EQ(Settings.IniFilePath, "C:\\KORLAN\\SYS\\TESSARY.INI") << "without the library";
    std::filesystem::copy_file(KLN_SAMPLE_SUITE, drive.HostPathOf("KORLAN\\libklwupdt.so"));
    drive.Write("KORLAN\\IniFile.txt", "C:\\Elsewhere\\SUITE.INI\n");
    InitLibraryInterface();
    EXPECT_EQ(Settings.IniFilePath, "C:\\Elsewhere\\SUITE.INI");
    FormFill();
    LoadLocalisation();
    EXPECT_EQ(E_GetString("ServerPath") + E_GetString("LANGUAGEPATH"), "C:\\KORLANC:\\KORLAN\\COUNTRY\\English");
    D_Device();
    EXPECT_GT(OM_SearchName(DB_DeviceMap(), ""), 0);
    InitLibraryInterface();
    EXPECT_EQ(OM_SearchName(DB_DeviceMap(), ""), 0) << "the suite's memory is made anew";
}

} // namespace
} // namespace korlan::test
