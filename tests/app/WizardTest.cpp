#include "app/StartUp.h"

#include "app/base/Settings.h"
#include "tests/app/SearchFixture.h"

namespace korlan::test {
namespace {

using Wizard = SearchTest;

TEST_F(Wizard, AWholeUpdateByIdentifiers) {
    WriteTextsOf({"9989",   "991875", "1725",   "991867", "991857", "327",    "10486",
                  "991860", "991861", "11200",  "991871", "991869", "991876", "5675",
                  "991864", "991865", "991257", "991866", "991854", "991877", "991878"});
    OfferOneFile();
    PublishItsArchive();

    std::string focus, progress, columns, steps;
    Desktop().onControlChanged = [&](const Control& control, Aspect aspect, std::int32_t) {
        const std::string& text = frmUpdate.lblMsgline.Caption();
        if (text.starts_with("T99187") && !steps.ends_with(text + "|")) steps += text + "|";
        if (aspect == Aspect::Focus) focus += control.Name() + " ";
        if (control.Kind() == ControlKind::ProgressBar && frmUpdate.prgRun.Visible())
            progress +=
                std::to_string(frmUpdate.prgRun.Value()) + "/" + std::to_string(frmUpdate.prgRun.Maximum()) + " ";
    };
    EXPECT_FALSE(Start());
    EXPECT_EQ(focus, "lvwFilesList ") << "not on Cancel";
    FormFill(); // a list filled twice has its columns once
    frmUpdate.lvwFilesList.SetVisible(true);
    for (const ListColumn& column : frmUpdate.lvwFilesList.Columns())
        columns += column.title + " " + std::to_string(column.width) + " ";
    EXPECT_EQ(columns, "T5675 2350 T991864 2850 T991865 975 T991257 1425 T991866 0 ");
    EXPECT_EQ(State(), "0 0: T9989 T991875 T1725");
    EXPECT_EQ(frmUpdate.form.Caption() + " " + frmUpdate.lblUpdate.Caption(), "Korlan T991867 T991857");
    std::string running;
    Desktop().onDoEvents = [&] {
        if (!running.ends_with(State())) running += State();
        EXPECT_FALSE(CloseWindow()) << "refused during a run";
        frmUpdate.lvwFilesList.UserToggle(1);
    };
    EXPECT_FALSE(Click(frmUpdate.cmdUpdate));
    Desktop().onDoEvents = {};
    EXPECT_EQ(running, "0 1: (T9989) T991875 (T1725)0 1: (T9989) (T991875) (T1725)") << "old clicks die in the end";
    EXPECT_EQ(steps + *frmUpdate.lvwFilesList.Row(1).subItems[2], "T991877 NEW.TXT|T991878 NEW.TXT|T991854");
    EXPECT_TRUE(frmUpdate.lvwFilesList.Row(1).checked) << "the list is locked";
    EXPECT_TRUE(frmUpdate.lvwFilesList.Row(1).bold);
    EXPECT_EQ(progress, "0/2 1/2 2/2 ");
    EXPECT_FALSE(frmUpdate.prgRun.Visible());
    EXPECT_EQ(drive.Read("KORLAN\\SYS\\NEW.TXT"), "new content");
    EXPECT_EQ(State() + " " + frmUpdate.lblMsgline.Caption(), "2 0: T327 T1725 T10486");
    EXPECT_EQ(ReadIniString("LIVEUPDATEFROMWEB", "1", ""), "SP1.mdb");

    EXPECT_FALSE(Click(frmUpdate.cmdCancel)); // Next
    EXPECT_EQ(State(), "0 0: T11200 T1725");
    EXPECT_FALSE(frmUpdate.lblMsgline.Visible());
    EXPECT_EQ(frmUpdate.lblUpdate.Caption() + frmUpdate.LblLive.Caption() + frmUpdate.Option2.Caption(),
              "T991861T991860T991871");
    std::string explained;
    for (OptionButton* option : {&frmUpdate.Option3, &frmUpdate.Option4, &frmUpdate.Option2}) {
        option->UserClick();
        explained += frmUpdate.LblOptionExplain.Caption() + " ";
    }
    EXPECT_EQ(explained, "T991876 T991869 T991869 ") << "one identifier for two";
    EXPECT_TRUE(Click(frmUpdate.cmdCancel)); // Finish
    EXPECT_EQ(Reminder(), "26/12/2025 0 0 0");
    EXPECT_TRUE(drive.Names("KORLAN\\Temp").empty());
}

TEST_F(Wizard, AFailedRunStaysBusyUntilRetrySucceeds) {
    WriteTextsOf({"991851", "991852", "991855", "991856", "991860", "991862", "991863"});
    OfferOneFile();
    EXPECT_FALSE(Start());
    server.Answer("/u/NEW.TXT.zip", {.body = "cut", .cutsAfter = 1});
    for (Button* again : {&frmUpdate.cmdUpdate, &frmUpdate.CmdRetry}) {
        EXPECT_FALSE(Click(*again));
        EXPECT_EQ(State(), "0 1: T991852 C&ancel (&Help)");
        EXPECT_FALSE(CloseWindow());
        EXPECT_EQ(frmUpdate.lblMsgline.Caption(), again == &frmUpdate.cmdUpdate ? "T991851" : "T991855T991856");
    }
    EXPECT_EQ(ReadIniString("LIVEUPDATEFROMWEB", "Number", "none"), "none");

    Desktop().answers = {kAnswerNo};
    EXPECT_FALSE(Click(frmUpdate.cmdCancel)) << "asks first";
    EXPECT_EQ(BoxTexts(), std::vector<std::string>{"T991862"});

    PublishItsArchive();
    EXPECT_FALSE(Click(frmUpdate.CmdRetry));
    EXPECT_EQ(State() + frmUpdate.lblMsgline.Caption(), "2 0: (T991852) T991863 &HelpT991860");
    EXPECT_EQ(ReadIniString("LIVEUPDATEFROMWEB", "1", ""), "SP1.mdb");
    EXPECT_TRUE(CloseWindow());
}

TEST_F(Wizard, CancelOnTheListAndDuringARun) {
    OfferOneFile();
    drive.Write("KORLAN\\SYS\\NEW.TXT", "old");
    drive.Touch("KORLAN\\SYS\\NEW.TXT", 2003, 1, 1, 0, 0, 0);
    EXPECT_FALSE(Start());
    EXPECT_TRUE(Click(frmUpdate.cmdCancel)); // on the list: at once, and nothing is stored
    EXPECT_EQ(Reminder(), "- - - -");
    EXPECT_FALSE(drive.Names("KORLAN\\Temp").empty()) << "cleaned up after a successful run only";

    PublishItsArchive();
    ResetProgram();
    EXPECT_FALSE(Start());
    Desktop().answers = {kAnswerYes};
    Desktop().onDoEvents = [] { // between the passes
        if (frmUpdate.lvwFilesList.Row(1).subItems[2] == "Copied from web") frmUpdate.cmdCancel.UserClick();
    };
    EXPECT_TRUE(Click(frmUpdate.cmdUpdate));
    EXPECT_EQ(Reminder(), "- - 0 0");
    EXPECT_EQ(drive.Read("KORLAN\\SYS\\NEW.TXT"), "old");

    ResetProgram();
    Desktop().onDoEvents = {};
    EXPECT_FALSE(Start());
    Desktop().onDoEvents = [] { Flags.CancelRequested = 1; };
    EXPECT_TRUE(Click(frmUpdate.cmdUpdate));
    EXPECT_EQ(ReadIniString("LIVEUPDATEFROMWEB", "Number", "none"), "none");
}

} // namespace
} // namespace korlan::test
