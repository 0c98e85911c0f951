#include "tests/support/ScriptedWindow.h"

#include "platform/Window.h"

namespace korlan::test {

ScriptedWindows& Windows() {
    static ScriptedWindows windows;
    return windows;
}

} // namespace korlan::test

namespace korlan {

using test::Windows;

WindowHandle Window::DesktopWindow() const {
    return 0xFFFF;
}

WindowHandle Window::GetChildWindow(WindowHandle /*parent*/) const {
    return NextWindow(0);
}

WindowHandle Window::NextWindow(WindowHandle window) const {
    return window < Windows().titles.size() ? window + 1 : 0;
}

std::string Window::GetText() const {
    return Windows().titles.at(Handle - 1);
}

void Window::Flash() const {
    Windows().touched.push_back("flash " + GetText());
}

void Window::BringToTop() const {
    Windows().touched.push_back("top " + GetText());
}

} // namespace korlan
