// The whole wizard as its user meets it: the real window on the toolkit's off-screen display, the real server, the real
// installation. Only other programs and the end of the process are scripted.
#pragma once

#include "app/StartUp.h"
#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "platform/FormHost.h"
#include "tests/support/ResetProgram.h"
#include "tests/support/Sample.h"
#include "tests/support/ScriptedProcess.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

namespace korlan::test {

// Answers every box the wizard shows, and keeps its text.
class People {
public:
    People() {
        QObject::connect(&timer_, &QTimer::timeout, [this] { AnswerBox(); });
        timer_.start(20);
    }
    std::vector<std::string> boxes;
    QString answer = "OK"; // object name of the button to press

private:
    void AnswerBox() {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr) return;
        boxes.push_back(box->text().remove(QChar(0x200B)).toStdString()); // without the places where a line may break
        auto* button = box->findChild<QPushButton*>(answer);
        ASSERT_NE(button, nullptr) << boxes.back();
        button->click();
    }
    QTimer timer_;
};

class WizardFixture : public testing::Test {
protected:
    explicit WizardFixture(const std::string& layout = {}) : sample(1, layout) {}
    ~WizardFixture() override { CloseFormHost(); }

    // A process that has just begun.
    static void Prepare() {
        CloseFormHost();
        ResetProgram();
        ResetProcess();
        Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
        OpenFormHost(frmUpdate.form);
        AttachHandlers();
    }
    static void Start() {
        Prepare();
        Form_Load();
    }
    static void CloseByTitleBar() {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (top->objectName() == "frmUpdate") top->close();
        DoEvents();
    }
    template <typename Widget>
    static Widget* Find(const char* name) {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (auto* found = top->findChild<Widget*>(name)) return found;
        ADD_FAILURE() << "no " << name;
        return nullptr;
    }
    static std::string Caption(const char* name) { return Find<QPushButton>(name)->text().toStdString(); }
    // Presses a button with the mouse and waits until its handler is through.
    static void Press(const char* name) {
        auto* button = Find<QPushButton>(name);
        ASSERT_TRUE(button->isVisible() && button->isEnabled()) << name;
        QTest::mouseClick(button, Qt::LeftButton);
        DoEvents();
    }
    static std::int32_t RowOf(const std::string& name) {
        for (std::int32_t row = 1; row <= frmUpdate.lvwFilesList.Count(); ++row)
            if (frmUpdate.lvwFilesList.Row(row).text == name) return row;
        ADD_FAILURE() << name << " is not in the list";
        return 1;
    }
    static void Toggle(const std::string& name) {
        auto* view = Find<QAbstractItemView>("lvwFilesList");
        view->setFocus();
        view->setCurrentIndex(view->model()->index(RowOf(name) - 1, 0));
        QTest::keyClick(view, Qt::Key_Space);
        DoEvents();
    }
    static bool Checked(const std::string& name) { return frmUpdate.lvwFilesList.Row(RowOf(name)).checked; }
    bool Ends(const char* button) {
        try {
            Press(button);
        } catch (const ProcessEnded&) {
            return true;
        }
        return false;
    }
    void ForgetAppliedPacks() {
        std::string ini = sample.Ini();
        const auto from = ini.find("[LIVEUPDATEFROMWEB]");
        ASSERT_NE(from, std::string::npos);
        ini.replace(from, 19, "[OLD]");
        std::ofstream(sample.Program() / "SYS" / "TESSARY.INI", std::ios::binary) << ini;
    }

    Sample sample;
    People people;
};

} // namespace korlan::test
