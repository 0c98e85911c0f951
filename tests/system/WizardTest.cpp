// The whole wizard as its user meets it: the real window on the toolkit's off-screen display, the real server, the real
// installation. Only other programs and the end of the process are scripted.
#include "app/Settings.h"
#include "app/StartUp.h"
#include "app/frmUpdate.h"
#include "platform/FormHost.h"
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

namespace korlan {
namespace {

namespace fs = std::filesystem;

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
        boxes.push_back(box->text().toStdString());
        auto* button = box->findChild<QPushButton*>(answer);
        ASSERT_NE(button, nullptr) << boxes.back();
        button->click();
    }
    QTimer timer_;
};

class WizardTest : public testing::Test {
protected:
    ~WizardTest() override { CloseFormHost(); }

    void Start() {
        CloseFormHost();
        ResetProgram();
        test::ResetProcess();
        test::Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
        OpenFormHost(frmUpdate.form);
        AttachHandlers();
        Form_Load();
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
        } catch (const test::ProcessEnded&) {
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

    test::Sample sample;
    People people;
};

TEST_F(WizardTest, FromTheSearchToAnUpdatedInstallation) {
    ASSERT_EQ(sample.Compare("snapshot"), 0);
    Start();
    EXPECT_EQ(frmUpdate.WizardState, 0);
    EXPECT_EQ(frmUpdate.IsBusy, 0);
    EXPECT_GT(frmUpdate.lvwFilesList.Count(), 20);
    EXPECT_TRUE(Find<QAbstractItemView>("lvwFilesList")->isVisible());

    Toggle("KLNLOCAL.TXT"); // a language's file takes the program's own files along
    EXPECT_FALSE(Checked("TESSARY.EXE"));
    EXPECT_TRUE(Checked("SUBCIR.IDX"));
    Toggle("TESSARY.EXE");
    EXPECT_TRUE(Checked("KLNLOCAL.TXT"));
    for (std::int32_t row = 1; row <= frmUpdate.lvwFilesList.Count(); ++row)
        EXPECT_TRUE(frmUpdate.lvwFilesList.Row(row).checked) << frmUpdate.lvwFilesList.Row(row).text;

    const fs::path third = sample.Served() / "KLWUPDTDOTTDLL.zip";
    fs::rename(third, third.string() + ".gone");
    Press("cmdUpdate");
    ASSERT_EQ(people.boxes.size(), 1u);
    EXPECT_EQ(people.boxes[0], "File Not Found : " + Suite.UpdateUrl + "/KLWUPDTDOTTDLL.zip");
    EXPECT_TRUE(Find<QPushButton>("CmdRetry")->isVisible());
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "LiveUpdate Failed.Click Retry to try again");
    EXPECT_EQ(frmUpdate.IsBusy, 1);
    EXPECT_EQ(sample.Ini().find("LIVEUPDATEFROMWEB"), std::string::npos);

    fs::rename(third.string() + ".gone", third);
    Press("CmdRetry");
    EXPECT_EQ(Caption("cmdCancel"), "Next");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update completed Successfully");
    EXPECT_EQ(frmUpdate.WizardState, 2);

    Press("cmdCancel");
    EXPECT_EQ(Caption("cmdCancel"), "Finish");
    EXPECT_TRUE(Find<QRadioButton>("Option2")->isChecked());
    EXPECT_FALSE(Find<QAbstractItemView>("lvwFilesList")->isVisible());
    EXPECT_TRUE(Ends("cmdCancel"));
    EXPECT_EQ(sample.Compare("report"), 0);

    Start(); // every pack is recorded: nothing is fetched
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found");
    EXPECT_EQ(frmUpdate.WizardState, 1);
    EXPECT_EQ(Caption("cmdCancel"), "Finish");
    EXPECT_EQ(people.boxes.size(), 1u);
}

TEST_F(WizardTest, ASecondSearchOverTheSameCatalogueFindsNothingInAnyTimeZone) {
    const test::ScopedVariable east("TZ", "Australia/Sydney");
    tzset();
    Start();
    Press("cmdUpdate");
    EXPECT_EQ(Caption("cmdCancel"), "Next");
    for (const char* zone : {"Australia/Sydney", "America/Los_Angeles", "Asia/Kolkata", "UTC"}) {
        const test::ScopedVariable here("TZ", zone);
        tzset();
        ForgetAppliedPacks();
        Start();
        EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found") << zone;
        EXPECT_EQ(frmUpdate.lvwFilesList.Count(), 0) << zone;
    }
    EXPECT_TRUE(people.boxes.empty());
}

} // namespace
} // namespace korlan

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
