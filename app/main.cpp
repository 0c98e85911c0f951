// Process entry: the form, its start-up, the message loop, and the last resort for what no trap has caught.
#include "app/StartUp.h"
#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "platform/FormHost.h"
#include "platform/Log.h"
#include "platform/MsgBox.h"
#include "platform/Process.h"

#include <cstdlib>
#include <exception>
#include <string>

using namespace korlan;

namespace {

int EndInError(const std::string& text) {
    LogLine("ends: " + text);
    ShowMsgBox(text, kBoxCritical, GetSysName());
    CloseFormHost();
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    try {
        SetProgramArguments(argc, argv);
        OpenFormHost(frmUpdate.form);
        AttachHandlers();
        Form_Load();
        RunMessageLoop();
        CloseFormHost();
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        return EndInError(error.what());
    } catch (...) {
        return EndInError("Unexpected error");
    }
}
