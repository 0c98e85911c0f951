// A wrapper of one window handle with the usual window operations. Handles are 32-bit, 0 = none.
// A walk, GetChildWindow(DesktopWindow()) and NextWindow from there, visits every top-level window once, hidden ones
// too, from the top of the z-order down. It goes by the windows there were at its beginning; one that has vanished
// since has an empty title. Nothing here raises: what cannot be done is left, and without a display no window exists.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

using WindowHandle = std::uint32_t;
using MenuHandle = std::uint32_t;

class Window {
public:
    WindowHandle Handle = 0; // set before any other method is used

    void DrawWindowMenuBar() const;
    void SetWindowMenu(MenuHandle menu) const;
    MenuHandle GetWindowMenu() const;
    void SetText(const std::string& title) const;
    std::string GetText() const;            // title, at most 254 characters
    std::string GetWindowClassName() const; // at most 254 characters
    std::int32_t GetTop() const;            // pixels of the screen
    std::int32_t GetLeft() const;
    std::int32_t GetWidth() const;
    std::int32_t GetHeight() const;
    WindowHandle GetFromXY(std::int32_t x, std::int32_t y) const;
    void Terminate() const; // asks the window to close
    void Minimize() const;
    void Destroy() const; // a window of this program; others are left alone
    void SetWindowParent(WindowHandle parent) const;
    void Flash() const;
    void BringToTop() const; // a hidden window stays hidden
    void Move(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) const;
    WindowHandle GetChildWindow(WindowHandle parent) const; // first child
    WindowHandle NextWindow(WindowHandle window) const;     // next in z-order after it
    WindowHandle DesktopWindow() const;
};

} // namespace korlan
