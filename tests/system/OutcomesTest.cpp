// Each way in which a start of the wizard can lead somewhere, and what its closing starts.
#include "tests/support/HttpServer.h"
#include "tests/support/XServer.h"
#include "tests/system/WizardFixture.h"

#include "platform/SettingsStore.h"

namespace korlan {
namespace {

namespace fs = std::filesystem;
using test::Process;
using test::ProcessEnded;
using test::StartedProgram;

class OutcomesTest : public test::WizardFixture {
protected:
    void WriteNote(const std::string& text) const { std::ofstream(sample.Served() / "KlnUpdt.txt") << text; }
    static bool ShownToAnybody() {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->isVisible()) return true;
        return false;
    }
};

TEST_F(OutcomesTest, SecondInstance) {
    const std::string before = sample.Ini();
    Prepare();
    Process().anotherInstance = true;
    EXPECT_THROW(Form_Load(), ProcessEnded);
    EXPECT_FALSE(ShownToAnybody());
    EXPECT_EQ(sample.Ini(), before);
    EXPECT_TRUE(sample.Logged("another copy is running"));
}

TEST_F(OutcomesTest, SuiteRunning) {
    const test::XServer server;
    const test::OtherProgram suite;
    suite.MakeWindow("Korlan: BOARD1", true);
    suite.Sync();
    Prepare();
    EXPECT_THROW(Form_Load(), ProcessEnded);
    EXPECT_EQ(people.boxes, std::vector<std::string>{"Close Korlan before running Live Update"});
    EXPECT_TRUE(sample.Logged("the suite is running") && sample.Logged("ends: at its start"));
}

TEST_F(OutcomesTest, SelfUpdate) {
    WriteNote("1-1-2200,0:0:0\r\nnewer\r\n");
    Prepare();
    EXPECT_THROW(Form_Load(), ProcessEnded);
    const std::vector<StartedProgram> expected{{"C:\\KORLAN\\KLNUPSLF.EXE", WindowStyle::NormalFocus}};
    EXPECT_EQ(Process().started, expected);
    EXPECT_TRUE(people.boxes.empty());
    EXPECT_TRUE(sample.Logged("the server's of 1-1-2200,0:0:0") && sample.Logged("error 9999 in Form_Load"));
}

TEST_F(OutcomesTest, NoUpdatesOffersTheReminderAndFinishStoresIt) {
    std::ofstream(sample.Program() / "SYS" / "TESSARY.INI", std::ios::app)
        << "\r\n[LIVEUPDATEFROMWEB]\r\nNumber=3\r\n1=SP1.mdb\r\n2=sp2.MDB\r\n3=SP3.mdb\r\n";
    Start();
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found");
    EXPECT_EQ(frmUpdate.WizardState, 1);
    EXPECT_TRUE(sample.Logged("catalogue: 0 packs besides the 3 recorded") && sample.Logged("shown: no updates found"));
    EXPECT_FALSE(Find<QPushButton>("cmdUpdate")->isVisible());
    auto* third = Find<QRadioButton>("Option4");
    ASSERT_TRUE(third->isVisible());
    third->click();
    DoEvents();
    EXPECT_EQ(frmUpdate.LblOptionExplain.Caption(), "Turn Off any future Live Updates");
    EXPECT_TRUE(Ends("cmdCancel"));
    EXPECT_EQ(GetSetting("Korlan", "Setup", "NoUpdt", "-"), "1");
    EXPECT_EQ(GetSetting("Korlan", "Setup", "LiveUpd", "-"), "-");
}

TEST_F(OutcomesTest, ConnectionError) {
    sample.StopServer();
    Start();
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(),
              "Live Update Error. An internet connection error occured.Please try again later");
    EXPECT_EQ(Caption("cmdCancel"), "&Close");
    EXPECT_TRUE(Find<QRadioButton>("Option2")->isChecked());
    EXPECT_TRUE(Ends("cmdCancel"));
    EXPECT_EQ(GetSetting("Korlan", "Setup", "NoUpdt", "-"), "0");
    EXPECT_TRUE(sample.Logged("shown: connection error") && sample.Logged("Update.mdb: status 0, 0 bytes"));
}

// The server takes the question and never answers. No goes on waiting; Yes ends the process from within the wait.
TEST_F(OutcomesTest, CancelDuringASearchThatHangs) {
    test::HttpServer silent;
    silent.Answer("/Update.mdb", {.stallsBeforeHeaders = true});
    std::ofstream(sample.Program() / "SYS" / "TESSARY.INI") << "[WEB]\r\nUPDATEONLINE=" << silent.Url() << "\r\n";
    Prepare();
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (silent.Targets().empty() || QApplication::activeModalWidget()) return;
        EXPECT_FALSE(Find<QPushButton>("cmdHelp")->isEnabled() || Find<QPushButton>("cmdUpdate")->isEnabled());
        CloseByTitleBar();
        EXPECT_TRUE(frmUpdate.form.Visible());
        people.answer = people.boxes.empty() ? "No" : "Yes";
        Find<QPushButton>("cmdCancel")->click();
    });
    user.start(30);
    EXPECT_THROW(Form_Load(), ProcessEnded);
    const std::string question = "Updation in progress, do you want to quit live update";
    EXPECT_EQ(people.boxes, (std::vector{question, question}));
    EXPECT_EQ(GetSetting("Korlan", "Setup", "LiveDay", "-"), "0");
    EXPECT_EQ(GetSetting("Korlan", "Setup", "LiveUpd", "-"), "-");
    EXPECT_TRUE(silent.AllAnswersEnded());
    EXPECT_TRUE(sample.Logged("ends: cancelled at work"));
}

TEST_F(OutcomesTest, ClosingTheListStartsNothing) {
    Start();
    EXPECT_THROW(CloseByTitleBar(), ProcessEnded);
    EXPECT_TRUE(Process().started.empty());
    EXPECT_TRUE(sample.Logged("ends: the window was closed"));
}

TEST_F(OutcomesTest, GermanWindow) {
    const test::Sample german(2);
    Start();
    EXPECT_EQ(frmUpdate.form.Caption(), "Korlan Live-Update");
    EXPECT_EQ(Caption("cmdUpdate"), "Akt&ualisieren");
    EXPECT_EQ(frmUpdate.lvwFilesList.Row(1).subItems[2], "Nicht aktualisiert");
}

} // namespace
} // namespace korlan
