// The wizard with a user who presses Update, Next and Finish as soon as they can be pressed: for trials of a server
// with many machines. Prints what was installed; ends with 4 when a download failed and with 5 at any message.
#include "app/StartUp.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"
#include "platform/FormHost.h"
#include "platform/Process.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace korlan;

namespace {

QPushButton* ButtonToPress(const char* name) {
    for (QWidget* top : QApplication::topLevelWidgets()) {
        auto* button = top->findChild<QPushButton*>(name);
        if (button != nullptr && button->isVisible() && button->isEnabled()) return button;
    }
    return nullptr;
}

void PressWhatCanBePressed() {
    if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        std::fprintf(stderr, "%s\n", box->text().toUtf8().constData());
        std::_Exit(5);
    }
    if (ButtonToPress("CmdRetry") != nullptr) std::_Exit(4);
    if (QPushButton* update = ButtonToPress("cmdUpdate")) return update->click();
    QPushButton* button = ButtonToPress("cmdCancel");
    const QString caption = button == nullptr ? QString() : button->text();
    if (caption == "Finish") {
        std::printf("%d\n", Tables.UpdatedFiles.UpperBound());
        std::fflush(stdout);
    }
    if (caption == "Next" || caption == "Finish" || caption == "Close") button->click();
}

} // namespace

int main(int argc, char** argv) {
    SetProgramArguments(argc, argv);
    OpenFormHost(frmUpdate.form);
    AttachHandlers();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, PressWhatCanBePressed);
    timer.start(100);
    Form_Load();
    RunMessageLoop();
    CloseFormHost();
    return 0;
}
