// Window on X11: handles are X window ids. What X11 has no equivalent of is said at the method.
#include "platform/Window.h"

#include "platform/TextEncoding.h"
#include "platform/linux/desktop/X11Display.h"

#include <unistd.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace korlan {
namespace {

using namespace x11;

constexpr std::uint32_t kLongestText = 254;  // characters: a buffer of 255 with its terminator
constexpr std::size_t kLongestTitle = 16384; // the longest a request of the oldest servers surely holds

std::string FromLatin1(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) AppendUtf8(text, static_cast<unsigned char>(byte));
    return text;
}

// Compound text is ASCII and Latin-1 until an escape sequence selects another set. Those of UTF-8 are taken as they
// are; a character of any other set becomes a replacement character, so that it never looks like ASCII.
std::string FromCompoundText(std::string_view bytes) {
    std::string text;
    bool asciiBelow = true, latinAbove = true;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (bytes.substr(i, 3) == "\x1b%G") {
            const std::size_t end = std::min(bytes.find("\x1b%@", i), bytes.size());
            text += bytes.substr(i + 3, end - i - 3);
            i = end + 2;
        } else if (byte == 0x1b) {
            std::size_t end = i + 1; // intermediate bytes, then one final byte
            while (end < bytes.size() && bytes[end] >= 0x20 && bytes[end] <= 0x2F) ++end;
            const std::string_view sequence = bytes.substr(i + 1, end - i);
            const bool above = sequence.find_first_of(")-.") != std::string_view::npos;
            (above ? latinAbove : asciiBelow) = sequence == (above ? "-A" : "(B");
            i = end;
        } else {
            const bool known = byte <= 0x20 || (byte < 0x80 ? asciiBelow : latinAbove);
            AppendUtf8(text, known ? byte : U'\uFFFD');
        }
    }
    return text;
}

std::string FirstCharacters(const std::string& text, std::size_t count = kLongestText) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!IsUtf8Tail(text[i]) && ++characters > count) return text.substr(0, i);
    return text;
}

} // namespace

// The menu of a window is a value it carries: X11 knows no menus.
void Window::SetWindowMenu(MenuHandle menu) const {
    if (const Display* display = Display::Get())
        display->Write(Handle, display->Atom(kKlnMenu), XCB_ATOM_CARDINAL, std::vector<std::uint32_t>{menu});
}

MenuHandle Window::GetWindowMenu() const {
    const Display* display = Display::Get();
    return display ? display->Read(Handle, display->Atom(kKlnMenu), 4).Value(0) : 0;
}

// The program that owns the window draws its menu bar: it is asked to draw the window.
void Window::DrawWindowMenuBar() const {
    if (const Display* display = Display::Get())
        display->Finish(xcb_clear_area_checked(display->Connection(), 1, Handle, 0, 0, 0, 0));
}

void Window::SetText(const std::string& title) const {
    const Display* display = Display::Get();
    if (!display) return;
    const std::string text = FirstCharacters(title, kLongestTitle);
    const bool ascii =
        std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    display->Write(Handle, display->Atom(kNetWmName), display->Atom(kUtf8String), text);
    const xcb_atom_t type = ascii ? xcb_atom_t{XCB_ATOM_STRING} : display->Atom(kUtf8String);
    display->Write(Handle, XCB_ATOM_WM_NAME, type, text);
}

std::string Window::GetText() const {
    const Display* display = Display::Get();
    if (!display) return {};
    xcb_connection_t* connection = display->Connection();
    const auto askedNew = AskProperty(connection, Handle, display->Atom(kNetWmName), 4 * kLongestText);
    const auto askedOld = AskProperty(connection, Handle, XCB_ATOM_WM_NAME, 4 * kLongestText);
    const Property newName = TakeProperty(connection, askedNew);
    const Property oldName = TakeProperty(connection, askedOld);
    if (newName.type == display->Atom(kUtf8String)) return FirstCharacters(newName.bytes);
    if (oldName.type == display->Atom(kUtf8String)) return FirstCharacters(oldName.bytes);
    const bool compound = oldName.type == display->Atom(kCompoundText);
    return FirstCharacters(compound ? FromCompoundText(oldName.bytes) : FromLatin1(oldName.bytes));
}

// WM_CLASS holds the name of the instance, a NUL, the name of the class, a NUL.
std::string Window::GetWindowClassName() const {
    const Display* display = Display::Get();
    if (!display) return {};
    const std::string names = display->Read(Handle, XCB_ATOM_WM_CLASS, 2 * kLongestText).bytes;
    const std::size_t split = names.find('\0');
    return split == std::string::npos ? "" : FirstCharacters(FromLatin1(names.substr(split + 1).c_str()));
}

std::int32_t Window::GetTop() const {
    const Display* display = Display::Get();
    return display ? display->OuterPlace(Handle).value_or(Place{}).top : 0;
}

std::int32_t Window::GetLeft() const {
    const Display* display = Display::Get();
    return display ? display->OuterPlace(Handle).value_or(Place{}).left : 0;
}

std::int32_t Window::GetWidth() const {
    const Display* display = Display::Get();
    return display ? display->OuterPlace(Handle).value_or(Place{}).width : 0;
}

std::int32_t Window::GetHeight() const {
    const Display* display = Display::Get();
    return display ? display->OuterPlace(Handle).value_or(Place{}).height : 0;
}

// The window under a point is the innermost one.
WindowHandle Window::GetFromXY(std::int32_t x, std::int32_t y) const {
    const Display* display = Display::Get();
    return display ? display->At(x, y) : 0;
}

// A window whose program does not take the message is left alone; cutting its connection would lose its work.
void Window::Terminate() const {
    const Display* display = Display::Get();
    if (!display) return;
    const Property protocols = display->Read(Handle, display->Atom(kWmProtocols), 256);
    for (std::size_t i = 0; i < protocols.Count(); ++i)
        if (protocols.Value(i) == display->Atom(kWmDeleteWindow))
            display->Send(Handle, XCB_EVENT_MASK_NO_EVENT, Handle, kWmProtocols,
                          {display->Atom(kWmDeleteWindow), XCB_CURRENT_TIME, 0, 0, 0});
}

void Window::Minimize() const {
    constexpr std::uint32_t kIconic = 3;
    if (const Display* display = Display::Get()) display->TellManager(Handle, kWmChangeState, {kIconic, 0, 0, 0, 0});
}

// Only a program's own windows can be destroyed.
void Window::Destroy() const {
    const Display* display = Display::Get();
    if (display && display->Read(Handle, display->Atom(kNetWmPid), 4).Value(0) == static_cast<std::uint32_t>(getpid()))
        display->Finish(xcb_destroy_window_checked(display->Connection(), Handle));
}

// The window keeps its place within its parent. Parent 0 is the desktop.
void Window::SetWindowParent(WindowHandle parent) const {
    const Display* display = Display::Get();
    if (!display) return;
    const Place place = display->InnerPlace(Handle).value_or(Place{});
    display->Finish(xcb_reparent_window_checked(display->Connection(), Handle, parent ? parent : display->Root(),
                                                static_cast<std::int16_t>(place.left),
                                                static_cast<std::int16_t>(place.top)));
}

// The window manager shows that the window wants attention until it gets it. One that knows only the older hint, or
// none at all, finds the urgency flag in the window's hints.
void Window::Flash() const {
    constexpr std::uint32_t kAdd = 1, kFromPager = 2, kUrgent = 1u << 8;
    constexpr std::size_t kHintCount = 9;
    const Display* display = Display::Get();
    if (!display || !display->InnerPlace(Handle)) return;
    if (display->ManagerSpeaks(kNetWmStateDemandsAttention) && display->IsManaged(Handle)) {
        display->TellManager(Handle, kNetWmState, {kAdd, display->Atom(kNetWmStateDemandsAttention), 0, kFromPager, 0});
        return;
    }
    const Property old = display->Read(Handle, XCB_ATOM_WM_HINTS, kHintCount * 4);
    std::vector<std::uint32_t> hints(kHintCount);
    for (std::size_t i = 0; i < hints.size(); ++i) hints[i] = old.Value(i);
    hints[0] |= kUrgent;
    display->Write(Handle, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, hints);
}

// A managed window is activated, which also brings it back from its icon or from another desktop; any other is put on
// top as it stands. A hidden window stays hidden.
void Window::BringToTop() const {
    constexpr std::uint32_t kFromPager = 2;
    const Display* display = Display::Get();
    if (!display) return;
    display->Configure(Handle, XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE});
    if (display->IsManaged(Handle) && display->ManagerSpeaks(kNetActiveWindow))
        display->TellManager(Handle, kNetActiveWindow, {kFromPager, XCB_CURRENT_TIME, 0, 0, 0});
}

// Place and size are those of the frame; the client inside it is smaller by what the frame adds.
void Window::Move(std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height) const {
    constexpr std::uint32_t kNorthWest = 1, kAllFour = 0xF00, kFromPager = 0x2000;
    const Display* display = Display::Get();
    if (!display) return;
    const std::optional<Place> outer = display->OuterPlace(Handle);
    const std::optional<Place> inner = display->InnerPlace(Handle);
    if (!outer || !inner) return;
    const auto x = static_cast<std::uint32_t>(left), y = static_cast<std::uint32_t>(top);
    const auto w = static_cast<std::uint32_t>(std::max(1, width - (outer->width - inner->width) - 2 * inner->border));
    const auto h =
        static_cast<std::uint32_t>(std::max(1, height - (outer->height - inner->height) - 2 * inner->border));
    if (display->IsManaged(Handle) && display->ManagerSpeaks(kNetMoveresizeWindow))
        display->TellManager(Handle, kNetMoveresizeWindow, {kNorthWest | kAllFour | kFromPager, x, y, w, h});
    else
        display->Configure(
            Handle, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
            {x, y, w, h});
}

WindowHandle Window::GetChildWindow(WindowHandle parent) const {
    Display* display = Display::Get();
    if (!display) return 0;
    if (parent == display->Root()) return display->FirstTopLevel();
    const std::vector<xcb_window_t> children = display->Children(parent);
    return children.empty() ? 0 : children.front();
}

WindowHandle Window::NextWindow(WindowHandle window) const {
    Display* display = Display::Get();
    return display ? display->After(window) : 0;
}

WindowHandle Window::DesktopWindow() const {
    const Display* display = Display::Get();
    return display ? display->Root() : 0;
}

} // namespace korlan
