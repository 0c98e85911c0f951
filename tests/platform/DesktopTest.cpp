// The desktop back end driven as a user drives it: on Linux on the toolkit's off-screen display.
#include "tests/support/Host.h"
#ifdef _WIN32
#include "tests/win32/Win32User.h"
#else
#include "tests/support/QtUser.h"
#endif

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace korlan {
namespace {

std::string Repeated(const char* text, int times) {
    std::string all;
    while (times-- > 0) all += text;
    return all;
}

using namespace test;
using testing::ElementsAre;

class Desktop : public testing::Test {
protected:
    // The wizard's controls without its logic.
    Form form{"frmUpdate", "", "Korlan Live Update", 10800, 7200};
    Label lblMainHead{"lblMainHead", "", "Korlan Live Update"}, lblUpdate{"lblUpdate", "", "New files:"},
        lblMsgline{"lblMsgline"}, LblLive{"LblLive", "", "Reminders"}, LblOptionExplain{"LblOptionExplain", "", "Why"};
    ImageList ilsCleanUp{"ilsCleanUp", {"Dot", "", "DELETE", "BDot", "FOLDEROPEN", "FOLDER", "", "NOTDELETE"}};
    ListView lvwFilesList{"lvwFilesList", ilsCleanUp};
    OptionButton Option2{"Option2", "", "15 days"}, Option3{"Option3", "", "30 days"}, Option4{"Option4", "", "Never"};
    PictureBox picSteps{"picSteps"};
    ProgressBar prgRun{"prgRun"};
    Button cmdUpdate{"cmdUpdate", "", "&Update"}, CmdRetry{"CmdRetry", "", "Retry"},
        cmdCancel{"cmdCancel", "", "C&ancel"}, cmdHelp{"cmdHelp", "", "&Help"},
        cmdOther{"cmdOther", "", "Other"}; // the window lays out what it is given

    void SetUp() override {
        form.SetControls({&lblMainHead, &lblUpdate, &lvwFilesList, &lblMsgline, &LblLive, &Option2, &Option3, &Option4,
                          &LblOptionExplain, &cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther, &picSteps, &prgRun,
                          &ilsCleanUp});
        for (OptionButton* option : {&Option2, &Option3, &Option4}) option->SetGroup({&Option2, &Option3, &Option4});
        const std::pair<Region, std::vector<Control*>> places[] = {
            {Region::Side, {&picSteps}},
            {Region::Heading, {&lblMainHead}},
            {Region::Status, {&lblUpdate}},
            {Region::List, {&lvwFilesList}},
            {Region::Reminder, {&LblLive, &Option2, &Option3, &Option4, &LblOptionExplain}},
            {Region::Message, {&lblMsgline, &prgRun}},
            {Region::Buttons, {&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther}},
        };
        for (const auto& [region, controls] : places)
            for (Control* control : controls) control->SetPlace({.region = region, .lines = 2});
        LblLive.SetPlace({.region = Region::Reminder, .font = FontRole::Heading});
        OpenFormHost(form);
        for (const char* title : {"Name", "Path", "Size", "Status", "Invisible"})
            lvwFilesList.AddColumn(title, 1440, "Copied from web");
        lvwFilesList.SetColumnWidth(5, 0);
        for (const std::int32_t row : {1, 2, 3}) {
            lvwFilesList.AddRow(row, "FILE-" + std::to_string(row), "A.EXE", "NOTDELETE");
            lvwFilesList.SetChecked(row, true);
        }
        form.Show();
        DoEvents();
        User::SitDown(form);
        ASSERT_TRUE(User::IsActive());
    }
    void TearDown() override { CloseFormHost(); }
};

TEST_F(Desktop, SpaceAndMouseToggleARowOnce) {
    std::vector<std::int32_t> toggled;
    lvwFilesList.OnItemCheck = [&](std::int32_t row) {
        toggled.push_back(row);
        lvwFilesList.SetChecked(3, false); // linked rows are set from the handler and raise nothing
    };
    for (const bool locked : {false, true}) {
        lvwFilesList.SetLocked(locked);
        User::Focus(lvwFilesList);
        User::Choose(2);
        User::Press(Key::Space);
        for (const bool onBox : {true, false}) User::ClickRow(1, onBox); // beside the box it only selects
        EXPECT_THAT(toggled, ElementsAre(2, 1)) << locked;
    }
    for (const std::int32_t row : {1, 2, 3}) EXPECT_FALSE(lvwFilesList.Row(row).checked);
}

TEST_F(Desktop, OneSpaceSetsTheSelectedRowsAlike) {
    std::vector<std::int32_t> toggled;
    lvwFilesList.OnItemCheck = [&](std::int32_t row) {
        toggled.push_back(row);
        if (row == 1) lvwFilesList.SetChecked(3, lvwFilesList.Row(1).checked); // linked
    };
    lvwFilesList.AddRow(4, "FILE-4", "B.EXE", "NOTDELETE"); // unchecked
    User::Focus(lvwFilesList);
    for (const auto& [rows, checked] : {std::pair{std::vector{4}, true}, {{1, 2, 4}, false}, {{1, 2, 4}, true}}) {
        User::Press(Key::SelectAll);
        User::Press(Key::Space);
        EXPECT_EQ(std::exchange(toggled, {}), rows);
        for (const std::int32_t row : {1, 2, 3, 4}) EXPECT_EQ(lvwFilesList.Row(row).checked, checked) << row;
    }
}

TEST_F(Desktop, ARunShowsItsRowAndHowFarItIs) {
    for (std::int32_t row = 4; row <= 200; ++row) lvwFilesList.AddRow(row, std::to_string(row), "A.EXE", "DELETE");
    lvwFilesList.SetSubItem(150, 3, "Copied from web");
    lvwFilesList.SetBold(150, true);
    EXPECT_FALSE(User::SeesRow(150));
    for (const std::int32_t row : {9, 150}) lvwFilesList.EnsureVisible(row);
    DoEvents();
    EXPECT_TRUE(User::SeesRow(150));
    EXPECT_TRUE(User::IsBold(150));
    EXPECT_FALSE(User::IsBold(149));
    EXPECT_TRUE(User::FitsInBold(150, 4));
    prgRun.SetProgress(3, 8);
    EXPECT_EQ(User::Bar(prgRun), std::pair(3, 8));
    const Area place = User::Place(lvwFilesList);
    prgRun.SetVisible(false);
    DoEvents();
    EXPECT_EQ(User::Place(lvwFilesList), place) << "nothing moves when it goes";
}

TEST_F(Desktop, ALabelPaintsByTheFrameAndMovesNothing) {
    using Clock = std::chrono::steady_clock;
    User::PassTime(50);
    User::PaintsOf(lblMsgline);
    const auto begun = Clock::now();
    lblMsgline.SetCaption("first");
    int paints = User::PaintsOf(lblMsgline);
    EXPECT_EQ(paints, 1) << "the last paint was long ago: at once";
    const Area place = User::Place(lblMsgline);
    for (std::size_t i = 0; i < 5000; ++i) {
        lblMsgline.SetCaption(std::string(i % 90, 'm'));
        GiveWay();
    }
    paints += User::PaintsOf(lblMsgline);
    EXPECT_LE(paints, (Clock::now() - begun) / std::chrono::milliseconds(16) + 2);
    lblMsgline.SetCaption("last & only");
    User::PassTime(50);
    EXPECT_GT(User::PaintsOf(lblMsgline), 0) << "the last text is painted";
    EXPECT_EQ(User::Place(lblMsgline), place);
    EXPECT_EQ(User::NameOf(lblMsgline), "last & only");
    bool handled = false;
    User::Soon([&] { handled = true; });
    std::this_thread::sleep_for(2 * kDisplayFrame);
    GiveWay();
    EXPECT_TRUE(handled) << "a frame later a yield answers the user";
}

TEST_F(Desktop, KeysReachEveryControl) {
    std::string order;
    for (Button* button : {&cmdUpdate, &cmdCancel})
        button->OnClick = [&order, button] { order += button->Name() + "! "; };
    User::PressMnemonic('U');
    User::Focus(cmdCancel);
    User::Press(Key::Return);
    User::Focus(lvwFilesList);
    for (int step = 0; step < 8; ++step) {
        User::Press(Key::Tab);
        order += User::Focused() + " ";
    }
    // The options are one stop: the arrow keys go on from there.
    EXPECT_EQ(order, "cmdUpdate! cmdCancel! "
                     "Option2 cmdUpdate CmdRetry cmdCancel cmdHelp cmdOther lvwFilesList Option2 ");
}

TEST_F(Desktop, KeyboardFocusSelectsAnOptionOnce) {
    std::string clicks;
    for (OptionButton* option : {&Option2, &Option3, &Option4})
        option->OnClick = [&clicks, option] { clicks += option->Name() + " "; };
    User::Focus(lvwFilesList);
    lvwFilesList.SetVisible(false); // the toolkit moves the focus on to the first option
    DoEvents();
    EXPECT_EQ(clicks, "") << "hiding a control is no gesture";
    User::Focus(cmdHelp);
    Option2.SetFocus(); // from code
    DoEvents();
    EXPECT_EQ(clicks, "Option2 ");
    User::Press(Key::Down);
    EXPECT_EQ(clicks, "Option2 Option3 ");
    User::Click(Option4);
    EXPECT_EQ(clicks, "Option2 Option3 Option4 ");
    EXPECT_FALSE(User::IsChecked(Option3));
}

TEST_F(Desktop, EveryVisibleControlHasAName) {
    for (const Control* control : form.Controls()) {
        if (control == &lblMsgline || control == &ilsCleanUp) continue; // the one is empty, the other never seen
        const std::string name = User::NameOf(*control);
        EXPECT_TRUE(!name.empty() && name.find('&') == std::string::npos) << control->Name() << ": " << name;
    }
    lblUpdate.SetCaption("Searching /");
    EXPECT_EQ(User::NameOf(lvwFilesList), "Korlan Live Update");
#ifndef _WIN32 // what is inside a control is the system's own work there
    auto& list = *User::Reader(lvwFilesList).tableInterface();
    EXPECT_EQ(list.columnCount(), 4) << "the hidden column is nobody's";
    EXPECT_TRUE(list.cellAt(0, 0)->state().checkable && list.cellAt(0, 0)->state().checked);
    const auto* group = User::Reader(Option2).parent();
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(group->text(QAccessible::Name), "Reminders");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(FormWindow())->role(), QAccessible::Window);
#endif
}

TEST_F(Desktop, LongTextsStayInsideTheWindow) {
    const std::vector<Button*> buttons{&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther};
    const std::vector<Label*> labels{&lblMainHead, &lblUpdate, &lblMsgline, &LblLive, &LblOptionExplain};
    for (Button* button : buttons) button->SetCaption(button->Caption() + " and so many letters more");
    for (Label* label : labels) label->SetCaption(Repeated("too long ", 20));
    DoEvents();
    const auto place = [&](const Control& control) {
        EXPECT_TRUE(User::Window().Holds(User::Place(control))) << control.Name();
        return User::Place(control);
    };
    Area previous;
    for (const Button* button : buttons) {
        const Area area = place(*button);
        EXPECT_GE(area.right - area.left, User::WidthNeeded(*button)) << button->Name();
        EXPECT_FALSE(area.Meets(std::exchange(previous, area))) << button->Name();
    }
    for (const Label* label : labels) place(*label);
    const Area oneLine = User::Place(Option3);
    for (OptionButton* option : {&Option3, &Option4}) {
        option->SetFont({.face = "Arial", .points = 20});
        option->SetCaption(Repeated("too long ", 30));
    }
    User::PassTime(100);
    const Area wrapped = place(Option3);
    EXPECT_GE(wrapped.bottom - wrapped.top, 3 * (oneLine.bottom - oneLine.top)) << "a caption wraps";
    EXPECT_FALSE(wrapped.Meets(place(Option4)));
}

// The handler of any gesture may throw anything; it comes out of the next wait.
TEST_F(Desktop, WhatAHandlerThrowsComesOutOfTheWaits) {
    struct Odd {}; // no standard exception
    const auto fail = [](auto&&...) { throw Odd(); };
    cmdHelp.OnClick = Option2.OnClick = form.OnUnload = fail;
    lvwFilesList.OnItemCheck = fail;
    const std::function<void()> gestures[] = {[&] { User::Click(cmdHelp); }, [] { User::Press(Key::Space); },
                                              [] { User::Press(Key::Tab); }, User::CloseWindow};
    for (const auto& gesture : gestures) {
        User::Focus(lvwFilesList);
        EXPECT_THROW((gesture(), DoEvents()), Odd);
        EXPECT_NO_THROW(DoEvents());
    }
    User::Soon(User::CloseWindow);
    EXPECT_THROW(RunMessageLoop(), Odd);
}

// As a screen reader makes it, which no modal box stops.
TEST_F(Desktop, AGestureBehindABoxIsDropped) {
    cmdHelp.OnClick = Option3.OnClick = [] { FAIL() << "behind the box"; };
    User::WhenAsked([&] {
        for (const Control* control : std::initializer_list<Control*>{&cmdHelp, &Option3})
            User::ClickByReader(*control);
        EXPECT_FALSE(User::IsChecked(Option3));
        User::Answer("No");
    });
    EXPECT_EQ(ShowMsgBox("Quit?", kBoxYesNo, "Korlan"), kAnswerNo);
}

TEST_F(Desktop, TheCloseBoxAsksTheForm) {
    std::vector<std::int32_t> asked;
    form.OnQueryUnload = [&](std::int16_t& cancel, std::int32_t mode) {
        cancel = asked.empty() ? 1 : 0;
        asked.push_back(mode);
    };
    User::Soon([&] {
        User::CloseWindow();
        EXPECT_TRUE(User::SeesWindow());
        User::CloseWindow();
    });
    RunMessageLoop(); // returns when the form has gone
    EXPECT_FALSE(User::SeesWindow());
    EXPECT_THAT(asked, ElementsAre(0, 0));
}

TEST_F(Desktop, MessageBoxesFollowTheirStyle) {
    // The system's own boxes have no close box where there is neither Cancel nor one button alone.
    const auto closes = [](const char* instead) { return kOnWindows ? instead : nullptr; };
    const struct {
        std::int32_t style;
        const char *buttons, *standing; // in order of their names; the default button
        bool hasIcon;
        const char* press; // null: the close box
        std::int32_t answer;
    } cases[] = {
        {16, "OK", "OK", true, nullptr, kAnswerOk},
        {4 + 4096 + 48, "No Yes", "Yes", true, closes("No"), kAnswerNo},
        {483, "Cancel No Yes", "No", false, "No", kAnswerNo},
        {40, "Cancel No Yes", "Yes", true, nullptr, kAnswerCancel},
        {2, "Abort Ignore Retry", "Abort", false, closes("Abort"), 3},
    };
    const std::string text = "<b>" + std::string(400, 'W'); // no line can hold it
    for (const auto& row : cases) {
        SCOPED_TRACE("style " + std::to_string(row.style));
        User::WhenAsked([&] {
            const Box box = User::SeesBox();
            EXPECT_EQ(box.text, text);
            EXPECT_EQ(box.buttons, row.buttons);
            EXPECT_EQ(box.standing, row.standing);
            EXPECT_EQ(box.hasIcon, row.hasIcon);
            EXPECT_EQ(box.onTop, (row.style & kBoxSystemModal) != 0);
            User::Answer(row.press);
        });
        EXPECT_EQ(ShowMsgBox(text, row.style, ""), row.answer);
    }
}

TEST_F(Desktop, TheWindowLivesBehindABox) {
    SetMousePointer(MousePointer::Hourglass);
    SetMousePointer(MousePointer::Hourglass);
    User::PassTime(50);
    User::PaintsOf(lblMsgline);
    User::WhenAsked([&] {
#ifndef _WIN32 // where the box sets its own
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "a box is answered with an arrow";
#endif
        lblMsgline.SetCaption("behind the box");
        lblMsgline.SetCaption("behind the box, later");
        User::Soon([] { User::Soon([] { User::Answer("OK"); }); });
    });
    ShowMsgBox("Wait", 0, "Korlan");
    EXPECT_GT(User::PaintsOf(lblMsgline), 0);
    SetMousePointer(MousePointer::Default);
#ifndef _WIN32
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the pointer does not pile up";
#endif
}

TEST_F(Desktop, AnInputBoxGivesWhatWasTyped) {
    for (const bool ok : {true, false}) {
        User::WhenAsked([ok] {
            EXPECT_EQ(User::SeesBox().isSecret, ok);
            User::Type("p\xC3\xA4ss");
            User::Answer(ok ? "OK" : "Cancel");
        });
        EXPECT_EQ(ShowInputBox("Password for A.ZIP", "Password", ok), ok ? "p\xC3\xA4ss" : "");
    }
}

#ifndef _WIN32 // the system chooses both there
TEST(DesktopFonts, CharsetsFollowTheLocale) {
    for (const auto& [locale, charset] :
         {std::pair{"C", 1}, {"de_DE", 0}, {"pl_PL", 238}, {"ru_RU", 204}, {"zh_CN", 134}, {"zh_TW", 136}})
        EXPECT_EQ(CharsetOfLocale(locale), charset) << locale;
    const QFont font = ToQFont({"MS Sans Serif", 8.5F, 0, true}, {});
    EXPECT_TRUE(font.bold() && font.pointSizeF() == 8.5);
    EXPECT_FALSE(ToQFont({.face = "Arial"}, font).bold()) << "what the program says counts";
    EXPECT_TRUE(ToQFont({}, font).bold()) << "what it has never said is the host's";
}
#endif

} // namespace
} // namespace korlan

#ifndef _WIN32
int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    korlan::TheApplication();
    return RUN_ALL_TESTS();
}
#endif
