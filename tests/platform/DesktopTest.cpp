// The window, the boxes and the fonts of the desktop back end, driven as a user drives them: by keys, clicks and the
// close box. Runs on the toolkit's off-screen display.
#include "platform/Controls.h"
#include "platform/FormHost.h"
#include "platform/MsgBox.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/ListMirror.h"
#include "platform/linux/desktop/Pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
#include <functional>

namespace korlan {
namespace {

// The wizard's controls without its logic.
struct TestForm {
    Form form{"frmUpdate", "", "Korlan Live Update", 10800, 7200};
    Label lblMainHead{"lblMainHead", "", "Korlan Live Update"};
    Label lblUpdate{"lblUpdate", "", "New files:"};
    ImageList ilsCleanUp{"ilsCleanUp", {"Dot", "", "DELETE", "BDot", "FOLDEROPEN", "FOLDER", "", "NOTDELETE"}};
    ListView lvwFilesList{"lvwFilesList", ilsCleanUp};
    Label lblMsgline{"lblMsgline"};
    Label LblLive{"LblLive", "", "Reminders"};
    OptionButton Option2{"Option2", "", "15 days"}, Option3{"Option3", "", "30 days"}, Option4{"Option4", "", "Never"};
    Label LblOptionExplain{"LblOptionExplain", "", "Explanation"};
    PictureBox picSteps{"picSteps"};
    Button cmdUpdate{"cmdUpdate", "", "&Update"}, CmdRetry{"CmdRetry", "", "Retry"},
        cmdCancel{"cmdCancel", "", "C&ancel"}, cmdHelp{"cmdHelp", "", "&Help"};
    Button cmdOther{"cmdOther", "", "Other"}; // a control the layout does not know

    TestForm() {
        form.SetControls({&lblMainHead, &lblUpdate, &lvwFilesList, &lblMsgline, &LblLive, &Option2, &Option3, &Option4,
                          &LblOptionExplain, &cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther, &picSteps,
                          &ilsCleanUp});
        for (OptionButton* option : {&Option2, &Option3, &Option4}) option->SetGroup({&Option2, &Option3, &Option4});
    }
};

class Desktop : public testing::Test, protected TestForm {
protected:
    void SetUp() override {
        OpenFormHost(form);
        for (const char* title : {"Name", "Path", "Size", "Status", "Invisible"}) lvwFilesList.AddColumn(title, 1440);
        lvwFilesList.SetColumnWidth(5, 0);
        for (const std::int32_t row : {1, 2, 3}) {
            lvwFilesList.AddRow(row, "FILE-" + std::to_string(row), "A.EXE", "NOTDELETE");
            for (const std::int32_t subItem : {1, 2, 3, 4}) lvwFilesList.SetSubItem(row, subItem, "text");
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
    auto* widget = box.findChild<QAbstractButton*>(button);
    ASSERT_TRUE(widget) << "the box has no button " << button;
    widget->click();
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
        QTest::keyClick(List(), Qt::Key_Down);
        EXPECT_EQ(List()->currentIndex().row(), 1) << "a locked list is still read";
    }
    for (const std::int32_t row : {1, 2, 3}) EXPECT_FALSE(lvwFilesList.Row(row).checked);

    lvwFilesList.SetBold(2, true);
    lvwFilesList.SetSubItem(2, 3, "Updated");
    EXPECT_EQ(at(1, 3).data().toString(), "Updated");
    EXPECT_TRUE(at(1, 3).data(Qt::FontRole).value<QFont>().bold());
    EXPECT_TRUE(List()->isColumnHidden(4) && !List()->isColumnHidden(3));
    lvwFilesList.SetSubItem(2, 3, std::string(1'000'000, 'W'));
    EXPECT_LE(at(1, 3).data().toString().size(), 2001) << "the server may call a file what it likes";
    lvwFilesList.ClearRows();
    EXPECT_EQ(List()->model()->rowCount(), 0);
}

// Counts what reaches a widget.
class EventCounter : public QObject {
public:
    EventCounter(QObject& watched, QEvent::Type type) : type_(type) { watched.installEventFilter(this); }
    int count = 0;

private:
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == type_;
        return false;
    }
    QEvent::Type type_;
};

TEST_F(Desktop, ALabelPaintsByTheFrameAndMovesNothing) {
    QTest::qWait(50);
    EventCounter paints(*Find(lblMsgline), QEvent::Paint);
    EventCounter layouts(*window_, QEvent::LayoutRequest);
    QElapsedTimer clock;
    clock.start();
    lblMsgline.SetCaption("first");
    EXPECT_EQ(paints.count, 1) << "the last paint was long ago: at once";
    for (std::size_t i = 0; i < 5000; ++i) {
        lblMsgline.SetCaption("block " + std::to_string(i) + std::string(i % 90, 'm'));
        lblMsgline.Refresh();
        DoEvents();
    }
    lblMsgline.SetCaption("last & only");
    EXPECT_LE(paints.count, clock.elapsed() / 16 + 2);
    QTest::qWait(50);
    EXPECT_EQ(layouts.count, 0);
    EXPECT_EQ(Find(lblMsgline)->accessibleName(), "last & only");

    const auto shown = [&] { return window_->grab(Find(lblMsgline)->geometry()).toImage(); };
    const QImage last = shown(); // the same pixels as of a label that shows this text after another
    for (const char* text : {"something else", "last & only"}) {
        lblMsgline.SetCaption(text);
        QTest::qWait(50);
        EXPECT_EQ(shown() == last, *text == 'l') << text;
    }
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
    EXPECT_TRUE(Option3.Value() && !Option2.Value());
    QTest::mouseClick(Find(Option4), Qt::LeftButton, {}, {8, Find(Option4)->height() / 2});
    EXPECT_EQ(clicks, "Option2 Option3 Option4 ");
    EXPECT_FALSE(Find<QRadioButton>(Option3)->isChecked());
    for (Control* control : std::initializer_list<Control*>{&LblLive, &Option2, &Option3, &Option4})
        control->SetVisible(false);
    EXPECT_FALSE(Find(LblOptionExplain)->isVisible()) << "an explanation of nothing";
}

TEST_F(Desktop, EveryVisibleControlHasAName) {
    int looked = 0;
    for (const Control* control : form.Controls()) {
        QWidget* widget = Find(*control);
        if (!widget || !widget->isVisible() || control == &lblMsgline) continue; // the message line is empty
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(widget);
        ASSERT_TRUE(reader) << control->Name();
        const QString name = reader->text(QAccessible::Name);
        EXPECT_TRUE(!name.isEmpty() && !name.contains('&')) << control->Name() << ": " << name.toStdString();
        ++looked;
    }
    EXPECT_EQ(looked, 14);
    EXPECT_EQ(List()->accessibleName(), "New files:");
    QAccessibleInterface* row = QAccessible::queryAccessibleInterface(List())->tableInterface()->cellAt(0, 0);
    ASSERT_TRUE(row);
    EXPECT_TRUE(row->state().checkable && row->state().checked);
    lvwFilesList.SetChecked(1, false);
    EXPECT_FALSE(row->state().checked);
}

TEST_F(Desktop, LongTextsStayInsideTheWindow) {
    const std::vector<Button*> buttons{&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther};
    const std::vector<Label*> labels{&lblMainHead, &lblUpdate, &lblMsgline, &LblLive, &LblOptionExplain};
    const std::string sentence = "Live Update Error. An internet connection error occured.Please try again later. ";
    for (Button* button : buttons) button->SetCaption(button->Caption() + " " + button->Caption() + " and more");
    for (Label* label : labels) label->SetCaption(sentence + sentence);
    DoEvents();
    const auto place = [&](const Control& control) {
        const QRect area(Find(control)->mapTo(window_, QPoint(0, 0)), Find(control)->size());
        EXPECT_TRUE(window_->rect().contains(area)) << control.Name();
        return area;
    };
    QRect previous;
    for (const Button* button : buttons) {
        EXPECT_GE(place(*button).width(), Find(*button)->minimumSizeHint().width()) << button->Name();
        EXPECT_FALSE(place(*button).intersects(previous)) << button->Name();
        previous = place(*button);
    }
    for (const Label* label : labels) place(*label);
}

TEST_F(Desktop, PicturesAreReadableOnBothThemes) {
    const QPalette before = QApplication::palette();
    for (const QColor ground : {QColor(30, 30, 32), QColor(Qt::white)}) {
        QPalette palette(ground); // the toolkit's dark or light texts with it
        palette.setColor(QPalette::Base, ground);
        QApplication::setPalette(palette);
        for (std::int32_t picture = 1; picture <= 8; ++picture) {
            const QImage pixels = ListIcon(picture).pixmap(48).toImage();
            int clear = 0; // pixels that differ clearly from the ground; the others may be transparent
            for (int i = 0; i < pixels.width() * pixels.height(); ++i) {
                const QRgb pixel = pixels.pixel(i % pixels.width(), i / pixels.width());
                clear += qAlpha(pixel) > 128 && qAbs(qGray(pixel) - qGray(ground.rgb())) > 60;
            }
            EXPECT_GT(clear, 48 * 48 / 20) << "picture " << picture << " on " << ground.name().toStdString();
            EXPECT_EQ(qAlpha(pixels.pixel(0, 0)), 0) << "picture " << picture << " has a background";
        }
    }
    QApplication::setPalette(before);
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
    EXPECT_TRUE(window_->isVisible());

    // A gesture behind an open box ends the box, comes out of it into the handler that asked, and out of the outer
    // wait.
    bool passed = false;
    cmdUpdate.OnClick = [&] {
        WhenAsked([&](QWidget&) { gestures[0](); });
        try {
            ShowMsgBox("Quit?", kBoxYesNo, "Korlan");
        } catch (const Odd&) {
            passed = true;
            throw;
        }
    };
    QTimer::singleShot(0, [&] { Find<QPushButton>(cmdUpdate)->click(); });
    EXPECT_THROW(RunMessageLoop(), Odd);
    EXPECT_TRUE(passed);
    EXPECT_FALSE(QApplication::activeModalWidget());
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
    RunMessageLoop(); // nothing to wait for
}

TEST_F(Desktop, TheWindowGoesWhereTheProgramPutsIt) {
    form.Move(30 * 15, 20 * 15);
    const QRect room = window_->screen()->availableGeometry();
    EXPECT_TRUE(window_->width() > room.width() || room.contains(window_->geometry()));
    EXPECT_TRUE(room.width() < 800 || window_->pos() == QPoint(30, 20)); // a small screen pushes it back
    EXPECT_FLOAT_EQ(ScreenWidth(), static_cast<float>(window_->screen()->geometry().width() * 15));
}

TEST_F(Desktop, MessageBoxesFollowTheirStyle) {
    const struct {
        std::int32_t style;
        const char *buttons, *standing; // in order of their names; the default button
        QMessageBox::Icon icon;
        const char* press; // null: the close box
        std::int32_t answer;
    } cases[] = {
        {0, "OK", "OK", QMessageBox::NoIcon, "OK", kAnswerOk},
        {16, "OK", "OK", QMessageBox::Critical, nullptr, kAnswerOk},
        {48 + 4096, "OK", "OK", QMessageBox::Warning, nullptr, kAnswerOk},
        {4 + 32, "No Yes", "Yes", QMessageBox::Question, nullptr, kAnswerNo},
        {4 + 256, "No Yes", "No", QMessageBox::NoIcon, "Yes", kAnswerYes},
        {3, "Cancel No Yes", "Yes", QMessageBox::NoIcon, nullptr, kAnswerCancel},
        {483, "Cancel No Yes", "No", QMessageBox::NoIcon, "No", kAnswerNo},
        {40, "Cancel No Yes", "Yes", QMessageBox::Question, "Cancel", kAnswerCancel},
        {2, "Abort Ignore Retry", "Abort", QMessageBox::NoIcon, nullptr, 3},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE("style " + std::to_string(row.style));
        WhenAsked([&row](QWidget& widget) {
            auto& box = dynamic_cast<QMessageBox&>(widget);
            QStringList names;
            for (const QAbstractButton* button : box.buttons()) names << button->objectName();
            names.sort();
            EXPECT_EQ(names.join(' ').toStdString(), row.buttons);
            EXPECT_EQ(box.defaultButton()->objectName().toStdString(), row.standing);
            EXPECT_EQ(box.icon(), row.icon);
            EXPECT_EQ((box.windowFlags() & Qt::WindowStaysOnTopHint) != 0, (row.style & kBoxSystemModal) != 0);
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.windowTitle(), "KlnUpdt");
            if (row.press) return Press(box, row.press);
            box.close();
        });
        EXPECT_EQ(ShowMsgBox("<b>A.ZIP</b>", row.style, ""), row.answer);
    }
}

TEST_F(Desktop, ABoxKeepsItsTextAndHoldsAllOfIt) {
    std::string address = "File Not Found : http://127.0.0.1:41234";
    for (int i = 0; i < 20; ++i) address += "/updates-of-2004";
    for (const std::string& text : {address, "C:\\" + std::string(400, 'W')}) {
        WhenAsked([&](QWidget& widget) {
            auto& box = dynamic_cast<QMessageBox&>(widget);
            EXPECT_EQ(box.text().remove(QChar(0x200B)).toStdString(), text);
            EXPECT_EQ(box.text().toStdString() == text, text == address) << "only a stretch no line can hold is broken";
            const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
            EXPECT_GE(label->width(), label->minimumSizeHint().width()) << text;
            EXPECT_LE(box.width(), box.screen()->availableGeometry().width()) << text;
            box.close();
        });
        ShowMsgBox(text, kBoxCritical, "Korlan");
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
    EXPECT_NE(QGuiApplication::overrideCursor(), nullptr);
    SetMousePointer(MousePointer::Default);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the pointer does not pile up";
}

TEST_F(Desktop, AnInputBoxGivesWhatWasTyped) {
    const auto ask = [](bool secret, const char* button) {
        WhenAsked([=](QWidget& box) {
            auto* edit = box.findChild<QLineEdit*>("InputText");
            ASSERT_TRUE(edit);
            EXPECT_EQ(edit->echoMode() == QLineEdit::Password, secret);
            edit->setText(QString::fromUtf8("p\xC3\xA4ss"));
            Press(box, button);
        });
        return ShowInputBox("Password for A.ZIP", "Password", secret);
    };
    EXPECT_EQ(ask(true, "OK"), "p\xC3\xA4ss");
    EXPECT_EQ(ask(false, "Cancel"), "");
}

TEST(DesktopFonts, CharsetsFollowTheLocale) {
    const std::vector<std::pair<const char*, std::int32_t>> charsets{
        {"C", 1},       {"en_GB", 0},   {"de_DE", 0},   {"pl_PL", 238}, {"ru_RU", 204}, {"el_GR", 161}, {"tr_TR", 162},
        {"lt_LT", 186}, {"he_IL", 177}, {"ja_JP", 128}, {"zh_CN", 134}, {"zh_TW", 136}, {"hi_IN", 1}};
    for (const auto& [locale, charset] : charsets) EXPECT_EQ(CharsetOfLocale(locale), charset) << locale;
    const QFont base, font = ToQFont({"MS Sans Serif", 8.5F, 0, true}, base);
    EXPECT_TRUE(font.bold() && font.pointSizeF() == 8.5);
    EXPECT_EQ(ToQFont({}, base), base) << "what is left open is the host's";
}

} // namespace
} // namespace korlan

// What the host's font library keeps to the end of the process is not ours to free.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig";
}

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    korlan::TheApplication();
    return RUN_ALL_TESTS();
}
