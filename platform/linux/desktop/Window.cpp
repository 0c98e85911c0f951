// Window on X11. Handles are X window ids. One connection of our own is opened at first use and kept; when its server
// has gone it is dropped and the next call tries $DISPLAY afresh. Other programs' windows vanish at any moment, so every
// request may fail, and a failed request is an empty answer.
#include "platform/Window.h"

#include <unistd.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace korlan {
namespace {

constexpr std::size_t kLongestText = 254; // characters: a buffer of 255 with its terminator
constexpr int kDeepestFrame = 4;          // window managers put at most a few windows around a client

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <class T> using Reply = std::unique_ptr<T, FreeReply>;

enum AtomName {
    kNetSupported,
    kNetSupportingWmCheck,
    kNetActiveWindow,
    kNetWmName,
    kNetWmPid,
    kNetWmState,
    kNetWmStateDemandsAttention,
    kNetMoveresizeWindow,
    kUtf8String,
    kCompoundText,
    kWmChangeState,
    kWmDeleteWindow,
    kWmProtocols,
    kWmState,
    kKlnMenu,
    kAtomCount
};
constexpr std::array<std::string_view, kAtomCount> kAtomTexts = {
    "_NET_SUPPORTED",     "_NET_SUPPORTING_WM_CHECK",       "_NET_ACTIVE_WINDOW",     "_NET_WM_NAME",
    "_NET_WM_PID",        "_NET_WM_STATE",                  "_NET_WM_STATE_DEMANDS_ATTENTION",
    "_NET_MOVERESIZE_WINDOW", "UTF8_STRING",                "COMPOUND_TEXT",          "WM_CHANGE_STATE",
    "WM_DELETE_WINDOW",   "WM_PROTOCOLS",                   "WM_STATE",               "KLN_MENU"};

struct Property {
    xcb_atom_t type = XCB_ATOM_NONE;
    std::string bytes; // values of 32 bits stand in host order
    std::uint32_t Value(std::size_t index) const {
        std::uint32_t value = 0;
        if ((index + 1) * sizeof value <= bytes.size()) bytes.copy(reinterpret_cast<char*>(&value), sizeof value, index * sizeof value);
        return value;
    }
    std::size_t Count() const { return bytes.size() / sizeof(std::uint32_t); }
};

struct Place {
    std::int32_t left = 0, top = 0, width = 0, height = 0;
};

class Display {
public:
    // Null when there is no display, or none any more.
    static Display* Get();

    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;
    ~Display() { xcb_disconnect(connection_); }

    xcb_connection_t* Connection() const { return connection_; }
    xcb_window_t Root() const { return root_; }
    xcb_atom_t Atom(AtomName name) const { return atoms_[name]; }

    Property Read(xcb_window_t window, xcb_atom_t property, std::uint32_t longestBytes) const;
    void Write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view text) const;
    void Write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, const std::vector<std::uint32_t>& values) const;
    void Finish(xcb_void_cookie_t request) const { Reply<xcb_generic_error_t>(xcb_request_check(connection_, request)); }

    bool ManagerSpeaks(AtomName hint) const;
    bool IsManaged(xcb_window_t window) const { return Read(window, Atom(kWmState), 8).type != XCB_ATOM_NONE; }
    void Send(xcb_window_t to, std::uint32_t mask, xcb_window_t about, AtomName type, std::array<std::uint32_t, 5> data) const;
    void TellManager(xcb_window_t about, AtomName type, std::array<std::uint32_t, 5> data) const {
        Send(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, about, type, data);
    }
    void Configure(xcb_window_t window, std::uint16_t mask, const std::vector<std::uint32_t>& values) const {
        Finish(xcb_configure_window_checked(connection_, window, mask, values.data()));
    }

    std::optional<Place> OuterPlace(xcb_window_t window) const;
    std::optional<Place> InnerPlace(xcb_window_t window) const;
    xcb_window_t TopAncestor(xcb_window_t window) const;
    xcb_window_t Parent(xcb_window_t window) const;
    std::vector<xcb_window_t> Children(xcb_window_t parent) const; // top of the z-order first

    xcb_window_t FirstTopLevel();
    xcb_window_t After(xcb_window_t window);

private:
    Display(xcb_connection_t* connection, xcb_window_t root);
    std::vector<xcb_window_t> TopLevels() const;

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::array<xcb_atom_t, kAtomCount> atoms_{};
    std::vector<xcb_window_t> walk_; // the top-level windows as they stood when the walk began
    std::size_t walked_ = 0;         // index of the window the walk has reached
};

Display* Display::Get() {
    static std::unique_ptr<Display> display;
    if (display) { // taking the waiting events is also what notices the end of the server
        while (Reply<xcb_generic_event_t>(xcb_poll_for_event(display->connection_))) {}
        if (xcb_connection_has_error(display->connection_)) display.reset();
    }
    if (!display) {
        int number = 0;
        xcb_connection_t* connection = xcb_connect(nullptr, &number);
        if (xcb_connection_has_error(connection)) {
            xcb_disconnect(connection);
            return nullptr;
        }
        xcb_screen_iterator_t screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
        for (; number > 0 && screen.rem > 1; --number) xcb_screen_next(&screen);
        display.reset(new Display(connection, screen.data->root));
    }
    return display.get();
}

Display::Display(xcb_connection_t* connection, xcb_window_t root) : connection_(connection), root_(root) {
    std::array<xcb_intern_atom_cookie_t, kAtomCount> cookies{};
    for (std::size_t i = 0; i < kAtomCount; ++i)
        cookies[i] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(kAtomTexts[i].size()), kAtomTexts[i].data());
    for (std::size_t i = 0; i < kAtomCount; ++i)
        if (Reply<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(connection_, cookies[i], nullptr)})
            atoms_[i] = reply->atom;
}

Property TakeProperty(xcb_connection_t* connection, xcb_get_property_cookie_t cookie) {
    Property property;
    xcb_generic_error_t* error = nullptr;
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, &error));
    std::free(error);
    if (!reply) return property;
    property.type = reply->type;
    property.bytes.assign(static_cast<const char*>(xcb_get_property_value(reply.get())),
                          static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    return property;
}

std::vector<xcb_window_t> TakeChildren(xcb_connection_t* connection, xcb_query_tree_cookie_t cookie) {
    xcb_generic_error_t* error = nullptr;
    const Reply<xcb_query_tree_reply_t> reply(xcb_query_tree_reply(connection, cookie, &error));
    std::free(error);
    if (!reply) return {};
    const xcb_window_t* first = xcb_query_tree_children(reply.get());
    const xcb_window_t* last = first + xcb_query_tree_children_length(reply.get());
    return {std::make_reverse_iterator(last), std::make_reverse_iterator(first)};
}

xcb_get_property_cookie_t AskProperty(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
                                      std::uint32_t longestBytes) {
    return xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestBytes / 4);
}

Property Display::Read(xcb_window_t window, xcb_atom_t property, std::uint32_t longestBytes) const {
    return TakeProperty(connection_, AskProperty(connection_, window, property, longestBytes));
}

void Display::Write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view text) const {
    Finish(xcb_change_property_checked(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                                       static_cast<std::uint32_t>(text.size()), text.data()));
}

void Display::Write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                    const std::vector<std::uint32_t>& values) const {
    Finish(xcb_change_property_checked(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                                       static_cast<std::uint32_t>(values.size()), values.data()));
}

// A manager that has died leaves its list of hints on the root; only a living one still owns its check window.
bool Display::ManagerSpeaks(AtomName hint) const {
    const xcb_window_t check = Read(root_, Atom(kNetSupportingWmCheck), 4).Value(0);
    if (check == 0 || Read(check, Atom(kNetSupportingWmCheck), 4).Value(0) != check) return false;
    const Property supported = Read(root_, Atom(kNetSupported), 4096);
    for (std::size_t i = 0; i < supported.Count(); ++i)
        if (supported.Value(i) == Atom(hint)) return true;
    return false;
}

void Display::Send(xcb_window_t to, std::uint32_t mask, xcb_window_t about, AtomName type,
                   std::array<std::uint32_t, 5> data) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = about;
    event.type = Atom(type);
    std::copy(data.begin(), data.end(), event.data.data32);
    Finish(xcb_send_event_checked(connection_, 0, to, mask, reinterpret_cast<const char*>(&event)));
}

xcb_window_t Display::Parent(xcb_window_t window) const {
    xcb_generic_error_t* error = nullptr;
    const Reply<xcb_query_tree_reply_t> reply(
        xcb_query_tree_reply(connection_, xcb_query_tree(connection_, window), &error));
    std::free(error);
    return reply ? reply->parent : XCB_WINDOW_NONE;
}

std::vector<xcb_window_t> Display::Children(xcb_window_t parent) const {
    return TakeChildren(connection_, xcb_query_tree(connection_, parent));
}

// The child of the root the window stands in: its frame, or the window itself.
xcb_window_t Display::TopAncestor(xcb_window_t window) const {
    for (xcb_window_t up = Parent(window); up != XCB_WINDOW_NONE && up != root_; up = Parent(up)) window = up;
    return window;
}

std::optional<Place> Display::InnerPlace(xcb_window_t window) const {
    xcb_generic_error_t* error = nullptr;
    const Reply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), &error));
    std::free(error);
    if (!reply) return std::nullopt;
    return Place{reply->x, reply->y, reply->width + 2 * reply->border_width, reply->height + 2 * reply->border_width};
}

std::optional<Place> Display::OuterPlace(xcb_window_t window) const { return InnerPlace(TopAncestor(window)); }

// Every top-level window, hidden ones too. The children of the root are in z-order; a frame stands for the client or
// clients in it, which bear WM_STATE. Each level of the tree is asked in one go, not window by window.
std::vector<xcb_window_t> Display::TopLevels() const {
    struct Candidate {
        xcb_window_t window;
        std::size_t place; // the child of the root it belongs to
    };
    const std::vector<xcb_window_t> children = Children(root_);
    std::vector<std::vector<xcb_window_t>> clients(children.size());
    std::vector<Candidate> level;
    for (std::size_t place = 0; place < children.size(); ++place) level.push_back({children[place], place});
    for (int depth = 0; depth <= kDeepestFrame && !level.empty(); ++depth) {
        std::vector<std::pair<xcb_get_property_cookie_t, xcb_query_tree_cookie_t>> asked;
        for (const Candidate& one : level)
            asked.emplace_back(AskProperty(connection_, one.window, Atom(kWmState), 8),
                               xcb_query_tree(connection_, one.window));
        std::vector<Candidate> below;
        for (std::size_t i = 0; i < level.size(); ++i) {
            const bool client = TakeProperty(connection_, asked[i].first).type != XCB_ATOM_NONE;
            const std::vector<xcb_window_t> inside = TakeChildren(connection_, asked[i].second);
            if (client)
                clients[level[i].place].push_back(level[i].window);
            else
                for (const xcb_window_t child : inside) below.push_back({child, level[i].place});
        }
        level = std::move(below);
    }
    std::vector<xcb_window_t> all;
    for (std::size_t place = 0; place < children.size(); ++place) {
        if (clients[place].empty()) all.push_back(children[place]);
        all.insert(all.end(), clients[place].begin(), clients[place].end());
    }
    return all;
}

xcb_window_t Display::FirstTopLevel() {
    walk_ = TopLevels();
    walked_ = 0;
    return walk_.empty() ? XCB_WINDOW_NONE : walk_.front();
}

// A window of the walk is followed by the next of the walk, whatever has moved or vanished meanwhile; any other window
// by the sibling below it.
xcb_window_t Display::After(xcb_window_t window) {
    if (walked_ >= walk_.size() || walk_[walked_] != window)
        walked_ = static_cast<std::size_t>(std::find(walk_.begin(), walk_.end(), window) - walk_.begin());
    if (walked_ < walk_.size()) return ++walked_ < walk_.size() ? walk_[walked_] : XCB_WINDOW_NONE;
    const std::vector<xcb_window_t> siblings = Children(Parent(window));
    auto at = std::find(siblings.begin(), siblings.end(), window);
    return at != siblings.end() && ++at != siblings.end() ? *at : XCB_WINDOW_NONE;
}

void AppendCharacter(std::string& text, std::uint32_t code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | (code >> 6));
        text += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | (code >> 12));
        text += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (code & 0x3F));
    }
}

std::string FromLatin1(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) AppendCharacter(text, static_cast<unsigned char>(byte));
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
            AppendCharacter(text, known ? byte : 0xFFFDu);
        }
    }
    return text;
}

std::string FirstCharacters(const std::string& text) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80 && ++characters > kLongestText) return text.substr(0, i);
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
    const bool ascii = std::all_of(title.begin(), title.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    display->Write(Handle, display->Atom(kNetWmName), display->Atom(kUtf8String), title);
    display->Write(Handle, XCB_ATOM_WM_NAME, ascii ? XCB_ATOM_STRING : display->Atom(kUtf8String), title);
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

