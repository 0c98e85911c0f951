#include "app/StartUp.h"

#include "app/Settings.h"
#include "tests/app/SearchFixture.h"
#include "tests/support/ScriptedWindow.h"

#include <filesystem>

namespace korlan::test {
namespace {

using StartUp = SearchTest;
using testing::Test;

bool ReminderPageShown() {
    return frmUpdate.LblLive.Visible() && frmUpdate.Option2.Visible() && frmUpdate.Option3.Visible() &&
           frmUpdate.Option4.Visible();
}

TEST_F(StartUp, ASecondCopyEndsBeforeAnythingShows) {
    Process().anotherInstance = true;
    Process().commandLine = "/sys:C:\\Nowhere";
    EXPECT_TRUE(Start());
    EXPECT_FALSE(frmUpdate.form.Visible());
    EXPECT_TRUE(Desktop().boxes.empty());
    EXPECT_TRUE(server.Targets().empty());
    EXPECT_TRUE(Process().started.empty());
}

TEST_F(StartUp, TheOpenSuiteIsBroughtForwardAndTheProgramEnds) {
    WriteIni("[Tessary]\r\nSysName=Board Lab\r\n");
    Windows().titles = {"", "Board Lab Live Update", "board lab: x", " Board Lab: BOARD1 ", "Board Lab: BOARD2"};
    EXPECT_TRUE(Start());
    EXPECT_EQ(BoxTexts(), std::vector<std::string>{"Close Board Lab before running Live Update"});
    EXPECT_EQ(Desktop().boxes.at(0).style, kBoxCritical);
    EXPECT_EQ(Windows().touched, (std::vector<std::string>{"flash  Board Lab: BOARD1 ", "top  Board Lab: BOARD1 "}));
    EXPECT_FALSE(frmUpdate.form.Visible());
    EXPECT_EQ(Ini(), "[Tessary]\r\nSysName=Board Lab\r\n");
    EXPECT_EQ(Reminder(), "- - - -");
}

TEST_F(StartUp, TheWindowIsCompleteBeforeTheSearchBegins) {
    OfferOneFile();
    std::string shown, searching;
    Desktop().onControlChanged = [&](const Control& control, Aspect aspect, std::int32_t) {
        if (&control != &frmUpdate.form || aspect != Aspect::Visible || !frmUpdate.form.Visible()) return;
        shown = frmUpdate.form.Caption() + "|" + frmUpdate.lblMainHead.Caption() + "|" + State();
        EXPECT_EQ(frmUpdate.form.Left(), 2280) << "centred";
        EXPECT_EQ(frmUpdate.form.Top(), 2160);
        ASSERT_EQ(frmUpdate.lvwFilesList.Columns().size(), 5U);
        EXPECT_EQ(frmUpdate.lvwFilesList.Columns()[4].width, 0);
        EXPECT_FALSE(frmUpdate.lvwFilesList.Visible() || frmUpdate.LblLive.Visible() || frmUpdate.Option4.Visible());
        EXPECT_TRUE(server.Targets().empty());
        EXPECT_TRUE(Desktop().pointers.empty());
    };
    Desktop().onDoEvents = [&] {
        if (!searching.empty()) return;
        searching = State();
        EXPECT_EQ(Desktop().pointers, std::vector{MousePointer::Hourglass});
        EXPECT_FALSE(CloseWindow()) << "refused during the search";
        EXPECT_TRUE(frmUpdate.form.Visible());
    };
    EXPECT_FALSE(Start());
    EXPECT_EQ(shown, "Korlan Live Update|Korlan Live Update|0 0: (&Update) C&ancel (&Help)");
    EXPECT_EQ(searching, "0 1: (&Update) C&ancel (&Help)");
    EXPECT_EQ(State(), "0 0: &Update C&ancel &Help");
    EXPECT_EQ(Desktop().pointers, (std::vector{MousePointer::Hourglass, MousePointer::Default}));
    EXPECT_EQ(frmUpdate.lvwFilesList.Count(), 1);
    EXPECT_TRUE(frmUpdate.lvwFilesList.Visible());
    EXPECT_FALSE(ReminderPageShown());
    EXPECT_TRUE(CloseWindow());
}

TEST_F(StartUp, ABadFolderWarnsAndTheDefaultIsUsed) {
    Process().commandLine = "\"/sys:C:\\Nowhere\"";
    EXPECT_FALSE(Start());
    EXPECT_EQ(Desktop().boxes.size(), 1U);
    EXPECT_EQ(Suite.IniFilePath, "C:\\KORLAN\\sys\\TESSARY.INI");
    EXPECT_EQ(Suite.UpdateUrl, server.Url("/u"));
}

TEST_F(StartUp, SearchesThatEndWithoutAList) {
    const auto dated = [](const char* date) {
        return std::vector<std::string>{"TESSARY.INI", "\\SYS", "1", date, "INI.zip"};
    };
    const struct {
        const char* what;
        std::function<void()> publish;
        const char *state, *status, *recorded;
    } rows[] = {
        {"nothing on the server", [] {}, "1 0: &Close &Help",
         "Live Update Error. An internet connection error occured.Please try again later", "-"},
        {"no packs", [&] { PublishCatalogue("Update.mdb", {}); }, "1 0: Finish &Help", "No updates found", "-"},
        {"everything installed",
         [&] {
             PublishCatalogue("Update.mdb", {{"SP1.mdb", "", "", "", ""}});
             PublishCatalogue("SP1.mdb", {dated("1-1-1999,0:0:0")});
         },
         "1 0: Finish &Help", "No updates found", "SP1.mdb"},
        {"catalogue damaged", [&] { Publish("Update.mdb", "no database"); }, "1 0: Finish &Help", "No updates found",
         "-"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ResetProgram();
        for (const char* name : {"Update.mdb", "SP1.mdb"}) std::filesystem::remove(drive.HostPathOf(name));
        WriteIni("[WEB]\r\nUPDATEONLINE=" + server.Url("/u") + "\r\n");
        row.publish();
        EXPECT_FALSE(Start());
        EXPECT_EQ(State(), row.state);
        EXPECT_EQ(frmUpdate.lblUpdate.Caption(), row.status);
        EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "");
        EXPECT_EQ(ReadIniString("LIVEUPDATEFROMWEB", "1", "-"), row.recorded);
        EXPECT_TRUE(ReminderPageShown());
        EXPECT_EQ(frmUpdate.LblLive.Caption(), "Configure Korlan Live Updates");
        EXPECT_TRUE(frmUpdate.LblLive.Font().bold);
        EXPECT_TRUE(frmUpdate.Option2.Value());
        EXPECT_EQ(frmUpdate.LblOptionExplain.Caption(), "Run Live Update Program after 15 days");
        EXPECT_TRUE(Click(frmUpdate.cmdCancel));
        EXPECT_EQ(Reminder(), "26/12/2025 0 0 0");
    }
}

TEST_F(StartUp, CancelDuringTheSearchAsksFirst) {
    OfferOneFile();
    Desktop().answers = {kAnswerNo, kAnswerYes};
    Desktop().onDoEvents = [] { frmUpdate.cmdCancel.UserClick(); };
    EXPECT_TRUE(Start());
    const std::string question = "Updation in progress, do you want to quit live update";
    EXPECT_EQ(BoxTexts(), (std::vector{question, question}));
    EXPECT_EQ(Desktop().boxes.at(0).style, kBoxYesNo + kBoxQuestion);
    EXPECT_EQ(Reminder(), "- - 0 0");
    EXPECT_EQ(korlan::Run.CancelRequested, 1);
}

TEST_F(StartUp, AFailedFetchAfterCancelShowsNoPage) {
    Desktop().onDoEvents = [] { korlan::Run.CancelRequested = 1; };
    EXPECT_TRUE(Start());
    EXPECT_EQ(frmUpdate.WizardState, 0);
}

TEST_F(StartUp, ANewerBuildTakesOver) {
    drive.Touch("KORLAN\\KlnUpdt.EXE", 2004, 3, 5, 9, 7, 12);
    const StartedProgram launcher{"C:\\KORLAN\\KLNUPSLF.EXE", WindowStyle::NormalFocus};
    const struct {
        const char* note;
        bool ends;
        std::vector<StartedProgram> started;
    } rows[] = {
        {"5-3-2004,9:8:0\r\nsecond line", true, {launcher}},
        {"05-03-2004,09:08:00\n", true, {launcher}},
        {" 5-3-2004,9:7:12 ", false, {}},
        {"5-3-2004,9:7:59", false, {}}, // the same minute
        {"4-3-2004,23:59:0", false, {}},
        {"", true, {}},          // past the end of the file
        {"not found", true, {}}, // no date
        {"\r\n5-3-2005,0:0:0", true, {}},
    };
    for (const auto& row : rows) {
        ResetProgram();
        Process().started.clear();
        PublishCatalogue("Update.mdb", {});
        std::filesystem::remove(drive.HostPathOf("Update.mdb"));
        Publish("KlnUpdt.txt", row.note);
        drive.Write("KORLAN\\Temp\\KlnUpdt.txt", "left from an earlier search");
        drive.SetMode("KORLAN\\Temp\\KlnUpdt.txt", 0444);
        EXPECT_EQ(Start(), row.ends) << row.note;
        EXPECT_EQ(Process().started, row.started) << row.note;
        EXPECT_EQ(frmUpdate.IsBusy, 0) << row.note;
        EXPECT_EQ(Desktop().pointers.back(), MousePointer::Default) << row.note;
    }
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(StartUp, WithoutANoteTheOldOneIsNotUsed) {
    PublishCatalogue("Update.mdb", {});
    drive.Write("KORLAN\\Temp\\KlnUpdt.txt", "5-3-2044,9:8:0\r\n");
    EXPECT_FALSE(Start());
    EXPECT_FALSE(drive.Exists("KORLAN\\Temp\\KlnUpdt.txt"));
}

TEST_F(StartUp, ClosingTheWindowStartsTheCompanionWhenDue) {
    const struct {
        std::int32_t succeeded, newUpdater;
        const char *program, *started;
    } rows[] = {
        {1, 1, "C:\\KORLAN\\KlnUpdt.EXE", "C:\\KORLAN\\KLNUPDTR.exe KEMO274"},
        {1, 1, "C:\\Board Lab\\KlnUpdt.EXE", "C:\\Board Lab\\KLNUPDTR.exe KEMO274"},
        {1, 0, "C:\\KORLAN\\KlnUpdt.EXE", nullptr},
        {0, 1, "C:\\KORLAN\\KlnUpdt.EXE", nullptr},
    };
    AttachHandlers();
    for (const auto& row : rows) {
        Process().started.clear();
        Process().programPath = row.program;
        korlan::Run.UpdateSucceeded = row.succeeded;
        korlan::Run.NewUpdaterLoaded = row.newUpdater;
        frmUpdate.form.Show();
        EXPECT_TRUE(CloseWindow());
        std::vector<StartedProgram> expected;
        if (row.started) expected.push_back({row.started, WindowStyle::MinimizedFocus});
        EXPECT_EQ(Process().started, expected);
    }
    Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
    Process().missing = {"C:\\KORLAN\\KLNUPDTR.exe KEMO274"};
    korlan::Run.UpdateSucceeded = korlan::Run.NewUpdaterLoaded = 1;
    EXPECT_TRUE(CloseWindow()) << "a companion that is not there keeps nobody";
}

TEST_F(StartUp, HelpOpensTheCompiledFileAndClosesWithTheWindow) {
    EXPECT_FALSE(Start());
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
    EXPECT_EQ(Suite.IniFilePath, "C:\\KORLAN\\SYS\\TESSARY.INI") << "without the library";
    std::filesystem::copy_file(KLN_SAMPLE_SUITE, drive.HostPathOf("KORLAN\\libklwupdt.so"));
    drive.Write("KORLAN\\IniFile.txt", "C:\\Elsewhere\\SUITE.INI\n");
    InitLibraryInterface();
    EXPECT_EQ(Suite.IniFilePath, "C:\\Elsewhere\\SUITE.INI");
}

} // namespace
} // namespace korlan::test
