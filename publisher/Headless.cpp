// The window's side of the wizard's procedures, for a program that has no window: nothing is shown, nobody is asked.
// The program they take themselves to be is the wizard of the installation that is looked at.
#include "publisher/Headless.h"

#include "platform/FormHost.h"
#include "platform/MsgBox.h"
#include "platform/Process.h"

#include <cstdlib>

namespace korlan {

namespace publisher {

std::string& WizardPath() {
    static std::string path = "C:\\KORLAN\\KlnUpdt.EXE";
    return path;
}

} // namespace publisher

void ControlChanged(const Control&, Aspect, std::int32_t) {}
void DoEvents() {}
void GiveWay() {}

std::int32_t ShowMsgBox(const std::string&, std::int32_t, const std::string&) {
    return kAnswerOk;
}

std::string ProgramPath() {
    return publisher::WizardPath();
}

void EndProcess() {
    std::abort(); // nothing here may end the program
}

} // namespace korlan
