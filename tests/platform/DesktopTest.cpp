// The window, the boxes and the fonts of the desktop back end, driven as a user drives them: by keys, clicks and the
// close box. Runs on the toolkit's off-screen display.
#include "platform/Controls.h"
#include "platform/FormHost.h"
#include "platform/MsgBox.h"
#include "platform/RuntimeError.h"
#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/FrameLabel.h"
#include "platform/linux/desktop/ListMirror.h"
#include "platform/linux/desktop/Pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <array>

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
        for (const char* title : {"File Name", "File Path", "File Size", "Status", "Invisible"})
            lvwFilesList.AddColumn(title, 1440);
        lvwFilesList.SetColumnWidth(5, 0);
        for (const char* name : {"A.EXE", "B.DLL", "C.KDL"}) AddRow(name);
        form.Show();
        DoEvents();
        window_ = FormWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
    }
    void TearDown() override { CloseFormHost(); }

    void AddRow(const std::string& name) {
        const std::int32_t row = lvwFilesList.Count() + 1;
        lvwFilesList.AddRow(row, "FILE-" + name, name, "NOTDELETE");
        for (const std::int32_t subItem : {1, 2, 3, 4}) lvwFilesList.SetSubItem(row, subItem, "text");
        lvwFilesList.SetChecked(row, true);
    }
    template <class Widget = QWidget>
    Widget* Find(const Control& control) {
        auto* widget = window_->findChild<QWidget*>(ToQString(control.Name()));
        return static_cast<Widget*>(widget);
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
    std::vector<std::int32_t> toggled;
    lvwFilesList.OnItemCheck = [&](std::int32_t row) {
        toggled.push_back(row);
        lvwFilesList.SetChecked(3, false); // linked rows are set from the handler and raise nothing
    };
    Focus(lvwFilesList);
    List()->setCurrentIndex(List()->model()->index(1, 2)); // any column: Space works on the row
    QTest::keyClick(List(), Qt::Key_Space);
    EXPECT_THAT(toggled, testing::ElementsAre(2));
    EXPECT_FALSE(lvwFilesList.Row(2).checked);
    EXPECT_FALSE(lvwFilesList.Row(3).checked);

    const QRect cell = List()->visualRect(List()->model()->index(0, 0));
    QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, {cell.left() + 10, cell.center().y()});
    EXPECT_THAT(toggled, testing::ElementsAre(2, 1));
    QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, {cell.right() - 4, cell.center().y()});
    EXPECT_THAT(toggled, testing::ElementsAre(2, 1)) << "a click beside the box only selects";

    lvwFilesList.SetLocked(true);
    QTest::mouseClick(List()->viewport(), Qt::LeftButton, {}, {cell.left() + 10, cell.center().y()});
    QTest::keyClick(List(), Qt::Key_Space);
    EXPECT_THAT(toggled, testing::ElementsAre(2, 1)) << "locked";
    QTest::keyClick(List(), Qt::Key_Down);
    EXPECT_EQ(List()->currentIndex().row(), 1) << "a locked list is still read";
}

TEST_F(Desktop, TheListShowsWhatTheRecordSays) {
    const QAbstractItemModel& model = *List()->model();
    lvwFilesList.SetBold(2, true);
    lvwFilesList.SetSubItem(2, 3, "Updated");
    EXPECT_EQ(model.index(1, 3).data().toString(), "Updated");
    EXPECT_TRUE(model.index(1, 3).data(Qt::FontRole).value<QFont>().bold());
    EXPECT_TRUE(List()->isColumnHidden(4));
    EXPECT_FALSE(List()->isColumnHidden(3));
    const QImage checked = model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
    lvwFilesList.SetSmallIcon(1, 3);
    EXPECT_NE(model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage(), checked);

    lvwFilesList.SetSubItem(2, 3, std::string(1'000'000, 'W'));
    EXPECT_LE(model.index(1, 3).data().toString().size(), 2001) << "the server may call a file what it likes";

    for (int row = 4; row <= 5000; ++row) AddRow(std::to_string(row));
    EXPECT_EQ(model.rowCount(), 5000);
    EXPECT_EQ(model.index(4999, 0).data().toString(), "5000");
    lvwFilesList.ClearRows();
    EXPECT_EQ(model.rowCount(), 0);
}

// Counts what reaches a widget.
class EventCounter : public QObject {
public:
    EventCounter(QObject& watched, QEvent::Type type) : type_(type) { watched.installEventFilter(this); }
    int count = 0;
    QRegion painted;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != type_) return false;
        ++count;
        if (type_ == QEvent::Paint) painted += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    QEvent::Type type_;
};

TEST_F(Desktop, AChangedRowIsTheOnlyOnePainted) {
    DoEvents();
    EventCounter paints(*List()->viewport(), QEvent::Paint);
    lvwFilesList.SetSubItem(2, 3, "Copied from web");
    QTest::qWait(50);
    ASSERT_GT(paints.count, 0);
    const QRect row = List()->visualRect(List()->model()->index(1, 0));
    EXPECT_GE(paints.painted.boundingRect().top(), row.top());
    EXPECT_LE(paints.painted.boundingRect().bottom(), row.bottom());
}

TEST_F(Desktop, ALabelPaintsByTheFrameAndMovesNothing) {
    QTest::qWait(50);
    EventCounter paints(*Find(lblMsgline), QEvent::Paint);
    EventCounter layouts(*window_, QEvent::LayoutRequest);
    QElapsedTimer clock;
    clock.start();
    lblMsgline.SetCaption("first");
    EXPECT_EQ(paints.count, 1) << "the last paint was long ago: at once";
    constexpr int kTexts = 5000;
    for (int i = 0; i < kTexts; ++i) {
        lblMsgline.SetCaption("block " + std::to_string(i) + std::string(static_cast<std::size_t>(i % 90), 'm'));
        lblMsgline.Refresh();
        DoEvents();
    }
    lblMsgline.SetCaption("last & only");
    const qint64 frames = clock.elapsed() / 16 + 2;
    EXPECT_LE(paints.count, frames);
    QTest::qWait(50);
    EXPECT_EQ(layouts.count, 0);
    EXPECT_EQ(Find(lblMsgline)->accessibleName(), "last & only");

    // What is on the screen is the last text: the same pixels as a label that has shown no other.
    const QImage shown = window_->grab(Find(lblMsgline)->geometry()).toImage();
    lblMsgline.SetCaption("something else");
    QTest::qWait(50);
    EXPECT_NE(window_->grab(Find(lblMsgline)->geometry()).toImage(), shown);
    lblMsgline.SetCaption("last & only");
    QTest::qWait(50);
    EXPECT_EQ(window_->grab(Find(lblMsgline)->geometry()).toImage(), shown);
}

TEST_F(Desktop, KeysReachTheButtons) {
    int updates = 0, cancels = 0;
    cmdUpdate.OnClick = [&] { ++updates; };
    cmdCancel.OnClick = [&] { ++cancels; };
    QTest::keyClick(window_, Qt::Key_U, Qt::AltModifier);
    QTest::keyClick(window_, Qt::Key_A, Qt::AltModifier);
    QTest::qWait(200); // a mnemonic shows the button pressed for a moment
    EXPECT_EQ(updates, 1);
    EXPECT_EQ(cancels, 1);
    Focus(cmdCancel);
    QTest::keyClick(Find(cmdCancel), Qt::Key_Return);
    EXPECT_EQ(cancels, 2);
    cmdUpdate.SetEnabled(false);
    QTest::keyClick(window_, Qt::Key_U, Qt::AltModifier);
    QTest::qWait(200);
    EXPECT_EQ(updates, 1) << "disabled";
}

TEST_F(Desktop, TabFollowsTheReadingOrder) {
    Focus(lvwFilesList);
    QStringList order;
    for (int step = 0; step < 9; ++step) {
        order << QApplication::focusWidget()->objectName();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    // The options are one stop: the arrow keys go on from there.
    EXPECT_EQ(order.join(' ').toStdString(),
              "lvwFilesList Option2 cmdUpdate CmdRetry cmdCancel cmdHelp cmdOther lvwFilesList Option2");
}

TEST_F(Desktop, KeyboardFocusSelectsAnOptionOnce) {
    std::vector<std::string> clicks;
    for (OptionButton* option : {&Option2, &Option3, &Option4})
        option->OnClick = [&clicks, option] { clicks.push_back(option->Name()); };
    Option2.SetFocus(); // from code
    DoEvents();
    EXPECT_THAT(clicks, testing::ElementsAre("Option2"));
    EXPECT_EQ(QApplication::focusWidget(), Find(Option2));
    EXPECT_TRUE(Find<QRadioButton>(Option2)->isChecked());

    QTest::keyClick(Find(Option2), Qt::Key_Down);
    EXPECT_THAT(clicks, testing::ElementsAre("Option2", "Option3"));
    EXPECT_TRUE(Option3.Value());
    EXPECT_FALSE(Option2.Value());
    QTest::mouseClick(Find(Option4), Qt::LeftButton, {}, {8, Find(Option4)->height() / 2});
    EXPECT_THAT(clicks, testing::ElementsAre("Option2", "Option3", "Option4"));
    EXPECT_FALSE(Find<QRadioButton>(Option3)->isChecked());
}

TEST_F(Desktop, HidingAControlIsNoGesture) {
    int clicks = 0;
    Option2.OnClick = [&] { ++clicks; };
    Focus(lvwFilesList);
    lvwFilesList.SetVisible(false); // the toolkit moves the focus on to the first option
    DoEvents();
    EXPECT_EQ(clicks, 0);
    for (Control* control : {static_cast<Control*>(&LblLive), static_cast<Control*>(&Option2),
                             static_cast<Control*>(&Option3), static_cast<Control*>(&Option4)})
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
        EXPECT_FALSE(name.isEmpty()) << control->Name();
        EXPECT_FALSE(name.contains('&')) << control->Name() << ": " << name.toStdString();
        ++looked;
    }
    EXPECT_EQ(looked, 14);
    EXPECT_EQ(List()->accessibleName(), "New files:");
    QAccessibleInterface* row = QAccessible::queryAccessibleInterface(List())->tableInterface()->cellAt(0, 0);
    ASSERT_TRUE(row);
    EXPECT_TRUE(row->state().checkable);
    EXPECT_TRUE(row->state().checked);
    lvwFilesList.SetChecked(1, false);
    EXPECT_FALSE(row->state().checked);
}

TEST_F(Desktop, LongTextsStayInsideTheWindow) {
    for (Button* button : {&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther})
        button->SetCaption(button->Caption() + " " + button->Caption() + " " + button->Caption());
    const std::string sentence = "Live Update Error. An internet connection error occured.Please try again later. ";
    for (Label* label : {&lblMainHead, &lblUpdate, &lblMsgline, &LblLive, &LblOptionExplain})
        label->SetCaption(sentence + sentence);
    DoEvents();
    QRect previous;
    for (const Button* button : {&cmdUpdate, &CmdRetry, &cmdCancel, &cmdHelp, &cmdOther}) {
        const QRect place(Find(*button)->mapTo(window_, QPoint(0, 0)), Find(*button)->size());
        EXPECT_TRUE(window_->rect().contains(place)) << button->Name();
        EXPECT_GE(place.width(), Find(*button)->minimumSizeHint().width()) << button->Name();
        EXPECT_FALSE(place.intersects(previous)) << button->Name();
        previous = place;
    }
    for (const Label* label : {&lblMainHead, &lblUpdate, &lblMsgline, &LblLive, &LblOptionExplain})
        EXPECT_TRUE(window_->rect().contains(QRect(Find(*label)->mapTo(window_, QPoint(0, 0)), Find(*label)->size())))
            << label->Name();
}

// The share of pixels that differ clearly from the background they are drawn on.
double Visible(const QImage& image, const QColor& background) {
    int seen = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAbs(qGray(image.pixel(x, y)) - qGray(background.rgb())) > 60) ++seen;
    return static_cast<double>(seen) / (image.width() * image.height());
}

TEST_F(Desktop, PicturesAndLabelsAreReadableOnBothThemes) {
    const QPalette before = QApplication::palette();
    for (const bool dark : {false, true}) {
        const QColor ground = dark ? QColor(30, 30, 32) : QColor(Qt::white);
        const QColor ink = dark ? Qt::white : Qt::black;
        QPalette palette(ground);
        for (const QPalette::ColorRole role : {QPalette::Base, QPalette::Window}) palette.setColor(role, ground);
        for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText}) palette.setColor(role, ink);
        QApplication::setPalette(palette);
        for (std::int32_t image = 1; image <= 8; ++image) {
            QImage pixels(48, 48, QImage::Format_RGB32);
            pixels.fill(ground);
            QPainter painter(&pixels);
            ListIcon(image).paint(&painter, pixels.rect());
            painter.end();
            EXPECT_GT(Visible(pixels, ground), 0.05) << "picture " << image << (dark ? " dark" : " light");
            EXPECT_EQ(pixels.pixel(0, 0), ground.rgb()) << "picture " << image << " has a background";
        }
        EXPECT_GT(Visible(Find(lblMainHead)->grab().toImage(), ground), 0.01) << (dark ? "dark" : "light");
    }
    QApplication::setPalette(before);
}

TEST_F(Desktop, WhatAHandlerThrowsComesOutOfTheWait) {
    struct Odd { // no standard exception
        int value;
    };
    cmdUpdate.OnClick = [] { throw RuntimeError(9999, "abort"); };
    cmdHelp.OnClick = [] { throw Odd{7}; };
    QTimer::singleShot(0, [&] { Find<QPushButton>(cmdUpdate)->click(); });
    EXPECT_THROW(RunMessageLoop(), RuntimeError);
    QTimer::singleShot(0, [&] { Find<QPushButton>(cmdHelp)->click(); });
    EXPECT_THROW(RunMessageLoop(), Odd);
    QTimer::singleShot(0, [&] { Find<QPushButton>(cmdHelp)->click(); });
    EXPECT_THROW(DoEvents(), Odd);
    EXPECT_NO_THROW(DoEvents());

    // A row's toggle, the focus of an option and the close box are gestures too.
    lvwFilesList.OnItemCheck = [](std::int32_t) { throw Odd{1}; };
    Focus(lvwFilesList);
    QTest::keyClick(List(), Qt::Key_Space);
    EXPECT_THROW(DoEvents(), Odd);
    Option2.OnClick = [] { throw Odd{2}; };
    Find(Option2)->setFocus(Qt::TabFocusReason);
    EXPECT_THROW(DoEvents(), Odd);
    form.OnUnload = [] { throw Odd{3}; };
    window_->close();
    EXPECT_THROW(DoEvents(), Odd);
    EXPECT_TRUE(window_->isVisible());
}

TEST_F(Desktop, NestedWaitsPassAnErrorOnOneByOne) {
    std::vector<std::string> path;
    cmdHelp.OnClick = [] { throw std::string("from help"); };
    cmdUpdate.OnClick = [&] {
        QTimer::singleShot(0, [&] { Find<QPushButton>(cmdHelp)->click(); });
        try {
            DoEvents();
        } catch (const std::string&) {
            path.push_back("inner DoEvents");
            throw;
        }
    };
    QTimer::singleShot(0, [&] { Find<QPushButton>(cmdUpdate)->click(); });
    try {
        DoEvents();
    } catch (const std::string& text) {
        path.push_back("outer DoEvents " + text);
    }
    EXPECT_THAT(path, testing::ElementsAre("inner DoEvents", "outer DoEvents from help"));

    // A gesture behind an open box ends the box and comes out of it.
    path.clear();
    cmdUpdate.OnClick = [&] {
        WhenAsked([&](QWidget&) { Find<QPushButton>(cmdHelp)->click(); });
        ShowMsgBox("Quit?", kBoxYesNo, "Korlan");
        path.push_back("not reached");
    };
    QTimer::singleShot(0, [&] { Find<QPushButton>(cmdUpdate)->click(); });
    EXPECT_THROW(RunMessageLoop(), std::string);
    EXPECT_THAT(path, testing::IsEmpty());
    EXPECT_FALSE(QApplication::activeModalWidget());
}

TEST_F(Desktop, TheCloseBoxAsksTheForm) {
    std::int16_t refuse = 1;
    std::vector<std::int32_t> asked;
    form.OnQueryUnload = [&](std::int16_t& cancel, std::int32_t mode) {
        asked.push_back(mode);
        cancel = refuse;
    };
    QTimer::singleShot(0, [&] {
        window_->close();
        EXPECT_TRUE(window_->isVisible());
        refuse = 0;
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
    if (room.width() >= 800) {
        EXPECT_EQ(window_->pos(), QPoint(30, 20));
    }
    EXPECT_FLOAT_EQ(ScreenWidth(), static_cast<float>(window_->screen()->geometry().width() * 15));
    SetMousePointer(MousePointer::Hourglass);
    SetMousePointer(MousePointer::Hourglass);
    SetMousePointer(MousePointer::Default);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the pointer does not pile up";
}

TEST_F(Desktop, MessageBoxesFollowTheirStyle) {
    struct Case {
        std::int32_t style;
        const char* buttons;  // in order of their names
        const char* standing; // the default button
        QMessageBox::Icon icon;
        std::int32_t closed; // answer of the close box
    };
    const std::array<Case, 9> cases{{
        {0, "OK", "OK", QMessageBox::NoIcon, kAnswerOk},
        {16, "OK", "OK", QMessageBox::Critical, kAnswerOk},
        {48 + 4096, "OK", "OK", QMessageBox::Warning, kAnswerOk},
        {4 + 32, "No Yes", "Yes", QMessageBox::Question, kAnswerNo},
        {4 + 256, "No Yes", "No", QMessageBox::NoIcon, kAnswerNo},
        {3, "Cancel No Yes", "Yes", QMessageBox::NoIcon, kAnswerCancel},
        {483, "Cancel No Yes", "No", QMessageBox::NoIcon, kAnswerCancel},
        {40, "Cancel No Yes", "Yes", QMessageBox::Question, kAnswerCancel},
        {2, "Abort Ignore Retry", "Abort", QMessageBox::NoIcon, 3},
    }};
    for (const Case& row : cases) {
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
            box.close();
        });
        EXPECT_EQ(ShowMsgBox("<b>A.ZIP</b>", row.style, ""), row.closed);
    }
    for (const auto& [button, answer] : std::vector<std::pair<const char*, std::int32_t>>{
             {"Yes", kAnswerYes}, {"No", kAnswerNo}, {"Cancel", kAnswerCancel}}) {
        WhenAsked([name = button](QWidget& box) { Press(box, name); });
        EXPECT_EQ(ShowMsgBox("Overwrite?", 483, "Korlan"), answer) << button;
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
}

TEST_F(Desktop, AnInputBoxGivesWhatWasTyped) {
    struct Case {
        const char* button;
        bool secret;
        const char* result;
    };
    for (const Case& row :
         {Case{"OK", true, "p\xC3\xA4ss"}, Case{"OK", false, "p\xC3\xA4ss"}, Case{"Cancel", true, ""}}) {
        WhenAsked([&row](QWidget& box) {
            auto* edit = box.findChild<QLineEdit*>("InputText");
            ASSERT_TRUE(edit);
            EXPECT_EQ(edit->echoMode() == QLineEdit::Password, row.secret);
            edit->setText(QString::fromUtf8("p\xC3\xA4ss"));
            Press(box, row.button);
        });
        EXPECT_EQ(ShowInputBox("Password for A.ZIP", "Password", row.secret), row.result) << row.button;
    }
}

TEST(DesktopFonts, CharsetsFollowTheLocale) {
    for (const auto& [locale, charset] : std::vector<std::pair<const char*, std::int32_t>>{{"C", 1},
                                                                                           {"en_GB", 0},
                                                                                           {"de_DE", 0},
                                                                                           {"pl_PL", 238},
                                                                                           {"ru_RU", 204},
                                                                                           {"el_GR", 161},
                                                                                           {"tr_TR", 162},
                                                                                           {"lt_LT", 186},
                                                                                           {"he_IL", 177},
                                                                                           {"ja_JP", 128},
                                                                                           {"zh_CN", 134},
                                                                                           {"zh_TW", 136},
                                                                                           {"hi_IN", 1}})
        EXPECT_EQ(CharsetOfLocale(locale), charset) << locale;
}

TEST(DesktopFonts, WindowsFacesFindAStandIn) {
    const QFont base;
    for (const char* face : {"MS Sans Serif", "Arial", "System"}) {
        const QFont font = ToQFont({face, 8.5F, 0, true}, base);
        const QString shown = QFontInfo(font).family();
        EXPECT_TRUE(shown.contains("Sans") || shown.contains("Arial") || shown.contains("Arimo"))
            << face << " is shown as " << shown.toStdString();
        EXPECT_TRUE(font.bold());
        EXPECT_DOUBLE_EQ(font.pointSizeF(), 8.5);
    }
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
