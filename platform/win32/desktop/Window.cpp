#include "platform/Window.h"

#include "platform/win32/Wide.h"

#include <algorithm>
#include <vector>

namespace korlan {
namespace {

HWND ToHwnd(WindowHandle handle) {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
}

WindowHandle FromHwnd(HWND window) {
    return static_cast<WindowHandle>(reinterpret_cast<std::uintptr_t>(window));
}

constexpr int kTextBuffer = 255; // characters, the end included

RECT RectOf(WindowHandle handle) {
    RECT rect{};
    GetWindowRect(ToHwnd(handle), &rect);
    return rect;
}

// The windows there were when a walk began. Bringing one to the top changes the order under the walk.
std::vector<WindowHandle> walk;

} // namespace

void Window::DrawWindowMenuBar() const {
    DrawMenuBar(ToHwnd(Handle));
}
void Window::SetWindowMenu(MenuHandle menu) const {
    SetMenu(ToHwnd(Handle), reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(menu)));
}
MenuHandle Window::GetWindowMenu() const {
    return static_cast<MenuHandle>(reinterpret_cast<std::uintptr_t>(GetMenu(ToHwnd(Handle))));
}
void Window::SetText(const std::string& title) const {
    SetWindowTextW(ToHwnd(Handle), Wide(title).c_str());
}
std::string Window::GetText() const {
    std::wstring text(kTextBuffer, 0);
    text.resize(static_cast<std::size_t>(GetWindowTextW(ToHwnd(Handle), text.data(), kTextBuffer)));
    return Narrow(text);
}
std::string Window::GetWindowClassName() const {
    std::wstring text(kTextBuffer, 0);
    text.resize(static_cast<std::size_t>(GetClassNameW(ToHwnd(Handle), text.data(), kTextBuffer)));
    return Narrow(text);
}
std::int32_t Window::GetTop() const {
    return RectOf(Handle).top;
}
std::int32_t Window::GetLeft() const {
    return RectOf(Handle).left;
}
std::int32_t Window::GetWidth() const {
    return RectOf(Handle).right - RectOf(Handle).left;
}
std::int32_t Window::GetHeight() const {
    return RectOf(Handle).bottom - RectOf(Handle).top;
}
WindowHandle Window::GetFromXY(std::int32_t x, std::int32_t y) const {
    return FromHwnd(WindowFromPoint({x, y}));
}
void Window::Terminate() const {
    SendMessageTimeoutW(ToHwnd(Handle), WM_CLOSE, 0, 0, SMTO_ABORTIFHUNG, 5000, nullptr);
}
void Window::Minimize() const {
    CloseWindow(ToHwnd(Handle));
}
void Window::Destroy() const {
    DestroyWindow(ToHwnd(Handle));
}
void Window::SetWindowParent(WindowHandle parent) const {
    SetParent(ToHwnd(Handle), ToHwnd(parent));
}
void Window::Flash() const {
    FlashWindow(ToHwnd(Handle), TRUE);
}
void Window::BringToTop() const {
    BringWindowToTop(ToHwnd(Handle));
}
void Window::Move(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) const {
    MoveWindow(ToHwnd(Handle), left, top, width, height, TRUE);
}

WindowHandle Window::GetChildWindow(WindowHandle parent) const {
    walk.clear();
    for (HWND window = ::GetWindow(ToHwnd(parent), GW_CHILD); window; window = ::GetWindow(window, GW_HWNDNEXT)) {
        if (std::ranges::find(walk, FromHwnd(window)) != walk.end()) break; // the order changes while we look
        walk.push_back(FromHwnd(window));
    }
    return walk.empty() ? 0 : walk.front();
}

WindowHandle Window::NextWindow(WindowHandle window) const {
    const auto found = std::ranges::find(walk, window);
    if (found == walk.end()) return FromHwnd(::GetWindow(ToHwnd(window), GW_HWNDNEXT));
    return found + 1 == walk.end() ? 0 : *(found + 1);
}

WindowHandle Window::DesktopWindow() const {
    return FromHwnd(GetDesktopWindow());
}

} // namespace korlan
