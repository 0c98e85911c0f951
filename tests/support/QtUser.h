// See WindowUser.h.
#pragma once

#include "platform/linux/desktop/Application.h"
#include "platform/linux/desktop/ListMirror.h"
#include "tests/support/WindowUser.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

namespace korlan::test {

struct PaintCounter : QObject {
    explicit PaintCounter(QWidget* counted) : QObject(counted) { counted->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint;
        return false;
    }
    int count = 0;
};

struct User {
    static void SitDown(const Form&) {}
    static bool IsActive() { return QTest::qWaitForWindowActive(FormWindow()); }
    static void Focus(const Control& control) {
        Find(control)->setFocus(Qt::MouseFocusReason);
    } // as a click there does
    static std::string Focused() { return QApplication::focusWidget()->objectName().toStdString(); }
    static void Press(Key key) { // in what has the focus
        constexpr Qt::Key kKeys[] = {Qt::Key_Space, Qt::Key_Return, Qt::Key_Tab, Qt::Key_Down, Qt::Key_A};
        QTest::keyClick(QApplication::focusWidget(), kKeys[static_cast<std::size_t>(key)],
                        key == Key::SelectAll ? Qt::ControlModifier : Qt::NoModifier);
    }
    static void PressMnemonic(char letter) {
        QTest::keyClick(FormWindow(), letter, Qt::AltModifier);
        QTest::qWait(200); // it shows the button pressed for a moment
    }
    static void Click(const Control& control) {
        QTest::mouseClick(Find(control), Qt::LeftButton, {}, {8, Find(control)->height() / 2});
    }
    static void ClickByReader(const Control& control) { // past a box
        Reader(control).actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    static void Choose(std::int32_t row) { List().setCurrentIndex(Cell(row, 2)); } // the space bar is for any column
    static void ClickRow(std::int32_t row, bool onBox) {
        const QRect cell = List().visualRect(Cell(row, 0));
        const QPoint place(onBox ? cell.left() + 10 : cell.right() - 4, cell.center().y());
        QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, place);
    }
    static void CloseWindow() { FormWindow()->close(); }
    static void PassTime(int milliseconds) { QTest::qWait(milliseconds); }

    static bool SeesWindow() { return FormWindow()->isVisible(); }
    static Area Window() { return AreaOf(*FormWindow()); }
    static Area Place(const Control& control) { return AreaOf(*Find(control)); }
    static int WidthNeeded(const Control& button) { return Find(button)->minimumSizeHint().width(); }
    static bool IsChecked(const OptionButton& option) { return static_cast<QRadioButton*>(Find(option))->isChecked(); }
    static std::string NameOf(const Control& control) { return Reader(control).text(QAccessible::Name).toStdString(); }
    static bool SeesRow(std::int32_t row) {
        return List().viewport()->rect().contains(List().visualRect(Cell(row, 0)).center());
    }
    static bool IsBold(std::int32_t row) { return Cell(row, 0).data(Qt::FontRole).value<QFont>().bold(); }
    static bool FitsInBold(std::int32_t row, int column) {
        return List().sizeHintForIndex(Cell(row, column - 1)).width() <= List().columnWidth(column - 1);
    }
    static std::pair<int, int> Bar(const ProgressBar& bar) { // where it stands, of how many
        auto* value = Reader(bar).valueInterface();
        return {value->currentValue().toInt(), value->maximumValue().toInt()};
    }
    static int PaintsOf(const Label& label) { // since the last call
        static QPointer<PaintCounter> counter;
        if (!counter) counter = new PaintCounter(Find(label));
        return std::exchange(counter->count, 0);
    }

    static void Soon(const std::function<void()>& what) { QTimer::singleShot(0, what); } // in the next wait
    static void WhenAsked(const std::function<void()>& what) {                           // as soon as a box is up
        Soon([what] {
            if (!QApplication::activeModalWidget()) FAIL() << "no box is up";
            what();
        });
    }
    static Box SeesBox() {
        if (const auto* edit = UpmostBox().findChild<QLineEdit*>())
            return {{}, {}, {}, false, false, edit->echoMode() == QLineEdit::Password};
        const auto& box = dynamic_cast<QMessageBox&>(UpmostBox());
        QStringList names;
        for (const QAbstractButton* button : box.buttons()) names << button->objectName();
        names.sort();
        EXPECT_EQ(box.textFormat(), Qt::PlainText);
        EXPECT_LE(box.width(), box.screen()->availableGeometry().width());
        const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
        EXPECT_GE(label->width(), label->minimumSizeHint().width());
        return {box.text().remove(QChar(0x200B)).toStdString(),      names.join(' ').toStdString(),
                box.defaultButton()->objectName().toStdString(),     box.icon() != QMessageBox::NoIcon,
                (box.windowFlags() & Qt::WindowStaysOnTopHint) != 0, false};
    }
    static void Answer(const char* button) { // null: by the close box
        button ? UpmostBox().findChild<QAbstractButton*>(button)->click() : static_cast<void>(UpmostBox().close());
    }
    static void Type(const std::string& text) { UpmostBox().findChild<QLineEdit*>()->setText(ToQString(text)); }

    static QWidget* Find(const Control& control) {
        return FormWindow()->findChild<QWidget*>(ToQString(control.Name()));
    }
    static QAccessibleInterface& Reader(const Control& control) {
        return *QAccessible::queryAccessibleInterface(Find(control));
    }

private:
    static ListMirror& List() { return *FormWindow()->findChild<ListMirror*>(); }
    static QModelIndex Cell(std::int32_t row, int column) { return List().model()->index(row - 1, column); }
    static QWidget& UpmostBox() { return *QApplication::activeModalWidget(); }
    static Area AreaOf(const QWidget& widget) {
        const QPoint corner = widget.mapTo(FormWindow(), QPoint(0, 0));
        return {corner.x(), corner.y(), corner.x() + widget.width(), corner.y() + widget.height()};
    }
};

} // namespace korlan::test
