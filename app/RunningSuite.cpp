#include "app/RunningSuite.h"

#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "app/base/frmUpdate.h"
#include "platform/Window.h"

namespace korlan {

void FindKorlanRunning(bool& found) {
    static Window window; // the form's one window object, made at first use
    found = false;
    for (WindowHandle h = window.GetChildWindow(window.DesktopWindow()); h != 0; h = window.NextWindow(h)) {
        window.Handle = h;
        const std::string title = Trim(window.GetText());
        if (title == frmUpdate.form.Caption() || !Contains(title, Settings.SysName + ":")) continue;
        window.Flash();
        window.BringToTop();
        found = true;
        return;
    }
}

} // namespace korlan
