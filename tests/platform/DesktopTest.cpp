// The desktop back end on the toolkit's off-screen display, driven as a user drives it.
#include "platform/Controls.h"
#include "platform/FormHost.h"
#include "platform/MsgBox.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/ListMirror.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

namespace korlan {
namespace {

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
        window_ = FormWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
    }
    void TearDown() override { CloseFormHost(); }

    template <class Widget = QWidget>
    Widget* Find(const Control& control) {
        return static_cast<Widget*>(window_->findChild<QWidget*>(ToQString(control.Name())));
    }
    ListMirror* List() { return Find<ListMirror>(lvwFilesList); }
    void Focus(const Control& control) { Find(control)->setFocus(Qt::MouseFocusReason); }

    QWidget* window_ = nullptr;
};

// Counts what reaches a widget.
struct EventCounter : QObject {
    EventCounter(QObject& watched, QEvent::Type counted) : type(counted) { watched.installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == type;
        return false;
    }
    const QEvent::Type type;
    int count = 0;
};

// Answers the next box: hands it to `answer` as soon as it is up.
template <class Answer>
void WhenAsked(Answer answer) {
    QTimer::singleShot(0, [answer] {
        QWidget* box = QApplication::activeModalWidget();
        if (!box) FAIL() << "no box is up";
        answer(*box);
    });
}

void Press(QWidget& box, const char* button) {
    box.findChild<QAbstractButton*>(button)->click();
}

TEST_F(Desktop, SpaceAndMouseToggleARowOnce) {
    const auto at = [&](int row, int column) { return List()->model()->index(row, column); };
    std::vector<std::int32_t> toggled;
    lvwFilesList.OnItemCheck = [&](std::int32_t row) {
        toggled.push_back(row);
        lvwFilesList.SetChecked(3, false); // linked rows are set from the handler and raise nothing
    };
    const QRect cell = List()->visualRect(at(0, 0));
    for (const bool locked : {false, true}) {
        lvwFilesList.SetLocked(locked);
        Focus(lvwFilesList);
        List()->setCurrentIndex(at(1, 2)); // any column: Space works on the row
        QTest::keyClick(List(), Qt::Key_Space);
        for (const int x : {cell.left() + 10, cell.right() - 4}) // a click beside the box only selects
            QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, {x, cell.center().y()});
        EXPECT_THAT(toggled, testing::ElementsAre(2, 1)) << locked;
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
    Focus(lvwFilesList);
    for (const auto& [rows, checked] : {std::pair{std::vector{4}, true}, {{1, 2, 4}, false}, {{1, 2, 4}, true}}) {
        QTest::keyClick(List(), Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(List(), Qt::Key_Space);
        EXPECT_EQ(std::exchange(toggled, {}), rows);
        for (const std::int32_t row : {1, 2, 3, 4}) EXPECT_EQ(lvwFilesList.Row(row).checked, checked) << row;
    }
}

TEST_F(Desktop, ARunShowsItsRowAndHowFarItIs) {
    for (std::int32_t row = 4; row <= 200; ++row) lvwFilesList.AddRow(row, std::to_string(row), "A.EXE", "DELETE");
    lvwFilesList.SetSubItem(150, 3, "Copied from web");
    lvwFilesList.SetBold(150, true);
    lvwFilesList.EnsureVisible(150);
    const QModelIndex status = List()->model()->index(149, 3);
    EXPECT_TRUE(List()->viewport()->rect().contains(List()->visualRect(status).center()));
    EXPECT_LE(List()->sizeHintForIndex(status).width(), List()->columnWidth(3)) << "it fits in bold";
    EXPECT_TRUE(status.data(Qt::FontRole).value<QFont>().bold());
    prgRun.SetProgress(3, 8);
    QAccessibleInterface* bar = QAccessible::queryAccessibleInterface(Find(prgRun));
    EXPECT_EQ(bar->valueInterface()->currentValue().toInt(), 3);
    EXPECT_EQ(bar->valueInterface()->maximumValue().toInt(), 8);
    const QRect place = List()->geometry();
    prgRun.SetVisible(false);
    DoEvents();
    EXPECT_EQ(List()->geometry(), place) << "nothing moves when it goes";
}

TEST_F(Desktop, ALabelPaintsByTheFrameAndMovesNothing) {
    QTest::qWait(50);
    EventCounter paints(*Find(lblMsgline), QEvent::Paint);
    EventCounter layouts(*window_, QEvent::LayoutRequest);
    QElapsedTimer clock;
    clock.start();
    lblMsgline.SetCaption("first");
    EXPECT_EQ(paints.count, 1) << "the last paint was long ago: at once";
    for (std::size_t i = 0; i < 5000; ++i) {
        lblMsgline.SetCaption(std::string(i % 90, 'm'));
        DoEvents();
    }
    EXPECT_LE(paints.count, clock.elapsed() / 16 + 2);
    paints.count = 0;
    lblMsgline.SetCaption("last & only");
    QTest::qWait(50);
    EXPECT_GT(paints.count, 0) << "the last text is painted";
    EXPECT_EQ(layouts.count, 0);
    EXPECT_EQ(Find(lblMsgline)->accessibleName(), "last & only");
}

TEST_F(Desktop, KeysReachEveryControl) {
    std::string order;
    for (Button* button : {&cmdUpdate, &cmdCancel})
        button->OnClick = [&order, button] { order += button->Name() + "! "; };
    QTest::keyClick(window_, Qt::Key_U, Qt::AltModifier);
    QTest::qWait(200); // a mnemonic shows the button pressed for a moment
    Focus(cmdCancel);
    QTest::keyClick(Find(cmdCancel), Qt::Key_Return);
    Focus(lvwFilesList);
    for (int step = 0; step < 8; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order += QApplication::focusWidget()->objectName().toStdString() + " ";
    }
    // The options are one stop: the arrow keys go on from there.
    EXPECT_EQ(order, "cmdUpdate! cmdCancel! "
                     "Option2 cmdUpdate CmdRetry cmdCancel cmdHelp cmdOther lvwFilesList Option2 ");
}

TEST_F(Desktop, KeyboardFocusSelectsAnOptionOnce) {
    std::string clicks;
    for (OptionButton* option : {&Option2, &Option3, &Option4})
        option->OnClick = [&clicks, option] { clicks += option->Name() + " "; };
    Focus(lvwFilesList);
    lvwFilesList.SetVisible(false); // the toolkit moves the focus on to the first option
    DoEvents();
    EXPECT_EQ(clicks, "") << "hiding a control is no gesture";
    Focus(cmdHelp);
    Option2.SetFocus(); // from code
    DoEvents();
    EXPECT_EQ(clicks, "Option2 ");
    QTest::keyClick(Find(Option2), Qt::Key_Down);
    EXPECT_EQ(clicks, "Option2 Option3 ");
    QTest::mouseClick(Find(Option4), Qt::LeftButton, {}, {8, Find(Option4)->height() / 2});
    EXPECT_EQ(clicks, "Option2 Option3 Option4 ");
    EXPECT_FALSE(Find<QRadioButton>(Option3)->isChecked());
}

TEST_F(Desktop, EveryVisibleControlHasAName) {
    for (const Control* control : form.Controls()) {
        QWidget* widget = Find(*control);
        if (!widget || !widget->isVisible() || control == &lblMsgline) continue; // the message line is empty
        const QString name = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        EXPECT_TRUE(!name.isEmpty() && !name.contains('&')) << control->Name() << ": " << name.toStdString();
    }
    lblUpdate.SetCaption("Searching /");
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(List());
    EXPECT_EQ(list->text(QAccessible::Name), "Korlan Live Update");
    EXPECT_EQ(list->tableInterface()->columnCount(), 4) << "the hidden column is nobody's";
    QAccessibleInterface* row = list->tableInterface()->cellAt(0, 0);
    EXPECT_TRUE(row->state().checkable && row->state().checked);
    const QAccessibleInterface* group = QAccessible::queryAccessibleInterface(Find(Option2)->parentWidget());
    EXPECT_EQ(group->role(), QAccessible::Grouping);
    EXPECT_EQ(group->text(QAccessible::Name), "Reminders");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(window_)->role(), QAccessible::Window);
}

TEST_F(Desktop, LongTextsStayInsideTheWindow) {
    const std::vector<Button*> buttons{&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther};
    const std::vector<Label*> labels{&lblMainHead, &lblUpdate, &lblMsgline, &LblLive, &LblOptionExplain};
    for (Button* button : buttons) button->SetCaption(button->Caption() + " and so many letters more");
    for (Label* label : labels) label->SetCaption(QString("too long ").repeated(20).toStdString());
    DoEvents();
    const auto place = [&](const Control& control) {
        const QRect area(Find(control)->mapTo(window_, QPoint(0, 0)), Find(control)->size());
        EXPECT_TRUE(window_->rect().contains(area)) << control.Name();
        return area;
    };
    QRect previous;
    for (const Button* button : buttons) {
        EXPECT_GE(place(*button).width(), Find(*button)->minimumSizeHint().width()) << button->Name();
        EXPECT_FALSE(place(*button).intersects(std::exchange(previous, place(*button)))) << button->Name();
    }
    for (const Label* label : labels) place(*label);
    const int oneLine = Find(Option3)->height();
    for (OptionButton* option : {&Option3, &Option4}) {
        option->SetFont({.face = "Arial", .points = 20});
        option->SetCaption(QString("too long ").repeated(30).toStdString());
    }
    QTest::qWait(100);
    EXPECT_GE(place(Option3).height(), 3 * oneLine) << "a caption wraps";
    EXPECT_LE(Find(Option3)->minimumSizeHint().width(), 640);
    EXPECT_FALSE(place(Option3).intersects(place(Option4)));
}

// The handler of any gesture may throw anything; it comes out of the next wait.
TEST_F(Desktop, WhatAHandlerThrowsComesOutOfTheWaits) {
    struct Odd {}; // no standard exception
    const auto fail = [](auto&&...) { throw Odd(); };
    cmdHelp.OnClick = Option2.OnClick = form.OnUnload = fail;
    lvwFilesList.OnItemCheck = fail;
    Focus(lvwFilesList);
    const std::function<void()> gestures[] = {
        [&] { Find<QPushButton>(cmdHelp)->click(); }, [&] { QTest::keyClick(List(), Qt::Key_Space); },
        [&] { Find(Option2)->setFocus(Qt::TabFocusReason); }, [&] { window_->close(); }};
    for (const auto& gesture : gestures) {
        gesture();
        EXPECT_THROW(DoEvents(), Odd);
        EXPECT_NO_THROW(DoEvents());
    }
    QTimer::singleShot(0, gestures[0]);
    EXPECT_THROW(RunMessageLoop(), Odd);
}

// As a screen reader makes it, which no modal box stops.
TEST_F(Desktop, AGestureBehindABoxIsDropped) {
    cmdHelp.OnClick = Option3.OnClick = [] { FAIL() << "behind the box"; };
    WhenAsked([&](QWidget& box) {
        for (const Control* control : std::initializer_list<Control*>{&cmdHelp, &Option3})
            QAccessible::queryAccessibleInterface(Find(*control))
                ->actionInterface()
                ->doAction(QAccessibleActionInterface::pressAction());
        EXPECT_FALSE(Find<QRadioButton>(Option3)->isChecked());
        Press(box, "No");
    });
    EXPECT_EQ(ShowMsgBox("Quit?", kBoxYesNo, "Korlan"), kAnswerNo);
}

TEST_F(Desktop, TheCloseBoxAsksTheForm) {
    std::vector<std::int32_t> asked;
    form.OnQueryUnload = [&](std::int16_t& cancel, std::int32_t mode) {
        cancel = asked.empty() ? 1 : 0;
        asked.push_back(mode);
    };
    QTimer::singleShot(0, [&] {
        window_->close();
        EXPECT_TRUE(window_->isVisible());
        window_->close();
    });
    RunMessageLoop(); // returns when the form has gone
    EXPECT_FALSE(window_->isVisible());
    EXPECT_THAT(asked, testing::ElementsAre(0, 0));
}

TEST_F(Desktop, MessageBoxesFollowTheirStyle) {
    const struct {
        std::int32_t style;
        const char *buttons, *standing; // in order of their names; the default button
        QMessageBox::Icon icon;
        const char* press; // null: the close box
        std::int32_t answer;
    } cases[] = {
        {16, "OK", "OK", QMessageBox::Critical, nullptr, kAnswerOk},
        {4 + 4096 + 48, "No Yes", "Yes", QMessageBox::Warning, nullptr, kAnswerNo},
        {483, "Cancel No Yes", "No", QMessageBox::NoIcon, "No", kAnswerNo},
        {40, "Cancel No Yes", "Yes", QMessageBox::Question, nullptr, kAnswerCancel},
        {2, "Abort Ignore Retry", "Abort", QMessageBox::NoIcon, nullptr, 3},
    };
    const std::string text = "<b>" + std::string(400, 'W'); // no line can hold it
    for (const auto& row : cases) {
        SCOPED_TRACE("style " + std::to_string(row.style));
        WhenAsked([&](QWidget& widget) {
            auto& box = dynamic_cast<QMessageBox&>(widget);
            QStringList names;
            for (const QAbstractButton* button : box.buttons()) names << button->objectName();
            names.sort();
            EXPECT_EQ(names.join(' ').toStdString(), row.buttons);
            EXPECT_EQ(box.defaultButton()->objectName().toStdString(), row.standing);
            EXPECT_EQ(box.icon(), row.icon);
            EXPECT_EQ((box.windowFlags() & Qt::WindowStaysOnTopHint) != 0, (row.style & kBoxSystemModal) != 0);
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.text().remove(QChar(0x200B)).toStdString(), text);
            EXPECT_LE(box.width(), box.screen()->availableGeometry().width());
            const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
            EXPECT_GE(label->width(), label->minimumSizeHint().width());
            if (row.press) return Press(box, row.press);
            box.close();
        });
        EXPECT_EQ(ShowMsgBox(text, row.style, ""), row.answer);
    }
}

TEST_F(Desktop, TheWindowLivesBehindABox) {
    SetMousePointer(MousePointer::Hourglass);
    SetMousePointer(MousePointer::Hourglass);
    EventCounter paints(*Find(lblMsgline), QEvent::Paint);
    WhenAsked([&](QWidget& box) {
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "a box is answered with an arrow";
        lblMsgline.SetCaption("behind the box");
        QTimer::singleShot(50, &box, [&box] { Press(box, "OK"); });
    });
    ShowMsgBox("Wait", 0, "Korlan");
    EXPECT_GT(paints.count, 0);
    SetMousePointer(MousePointer::Default);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the pointer does not pile up";
}

TEST_F(Desktop, AnInputBoxGivesWhatWasTyped) {
    for (const bool ok : {true, false}) {
        WhenAsked([ok](QWidget& box) {
            auto* edit = box.findChild<QLineEdit*>("InputText");
            EXPECT_EQ(edit->echoMode() == QLineEdit::Password, ok);
            edit->setText(QString::fromUtf8("p\xC3\xA4ss"));
            Press(box, ok ? "OK" : "Cancel");
        });
        EXPECT_EQ(ShowInputBox("Password for A.ZIP", "Password", ok), ok ? "p\xC3\xA4ss" : "");
    }
}

TEST(DesktopFonts, CharsetsFollowTheLocale) {
    for (const auto& [locale, charset] :
         {std::pair{"C", 1}, {"de_DE", 0}, {"pl_PL", 238}, {"ru_RU", 204}, {"zh_CN", 134}, {"zh_TW", 136}})
        EXPECT_EQ(CharsetOfLocale(locale), charset) << locale;
    const QFont font = ToQFont({"MS Sans Serif", 8.5F, 0, true}, {});
    EXPECT_TRUE(font.bold() && font.pointSizeF() == 8.5);
    EXPECT_FALSE(ToQFont({.face = "Arial"}, font).bold()) << "what the program says counts";
    EXPECT_TRUE(ToQFont({}, font).bold()) << "what it has never said is the host's";
}

} // namespace
} // namespace korlan

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    korlan::TheApplication();
    return RUN_ALL_TESTS();
}
