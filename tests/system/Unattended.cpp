// The wizard without a window, with a user who presses Update and then whatever ends it: a process to be killed, to be
// given failing files, or to be run under other tools. The installation is C:\KORLAN. The last line says how it ended.
#include "app/StartUp.h"
#include "app/base/frmUpdate.h"
#include "platform/Http.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/ScriptedProcess.h"

#include <iostream>

using namespace korlan;

namespace {

void Say(const std::string& text) {
    std::cout << text << std::endl;
}

void UseTheWizard() {
    Form_Load();
    if (frmUpdate.WizardState == 1) {
        Say(frmUpdate.lblUpdate.Caption() == "No updates found" ? "none" : "error");
    } else {
        frmUpdate.cmdUpdate.UserClick();
        Say(frmUpdate.CmdRetry.Visible()                                  ? "retry"
            : frmUpdate.lblMsgline.Caption().ends_with("ed Successfully") ? "updated"
                                                                          : "undecided");
    }
    for (int presses = 0; presses < 3; ++presses) frmUpdate.cmdCancel.UserClick();
}

} // namespace

int main() {
    test::Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
    test::Desktop().answers.assign(1000, kAnswerYes);
    SetHttpTimeLimit(std::chrono::milliseconds(400));
    AttachHandlers();
    try {
        UseTheWizard();
        Say("still open");
    } catch (const test::ProcessEnded&) {
        for (const test::ShownBox& box : test::Desktop().boxes) std::cerr << box.text << '\n';
    }
}
