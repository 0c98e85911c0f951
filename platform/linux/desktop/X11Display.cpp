#include "platform/linux/desktop/X11Display.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korlan::x11 {
namespace {

constexpr int kDeepestFrame = 4; // window managers put at most a few windows around a client

constexpr std::array<std::string_view, kAtomCount> kAtomTexts = {"_NET_SUPPORTED",
                                                                 "_NET_SUPPORTING_WM_CHECK",
                                                                 "_NET_ACTIVE_WINDOW",
                                                                 "_NET_WM_NAME",
                                                                 "_NET_WM_PID",
                                                                 "_NET_WM_STATE",
                                                                 "_NET_WM_STATE_DEMANDS_ATTENTION",
                                                                 "_NET_MOVERESIZE_WINDOW",
                                                                 "UTF8_STRING",
                                                                 "COMPOUND_TEXT",
                                                                 "WM_CHANGE_STATE",
                                                                 "WM_DELETE_WINDOW",
                                                                 "WM_PROTOCOLS",
                                                                 "WM_STATE",
                                                                 "KLN_MENU"};

std::vector<xcb_window_t> TakeChildren(xcb_connection_t* connection, xcb_query_tree_cookie_t cookie) {
    xcb_generic_error_t* error = nullptr;
    const Reply<xcb_query_tree_reply_t> reply(xcb_query_tree_reply(connection, cookie, &error));
    std::free(error);
    if (!reply) return {};
    const xcb_window_t* first = xcb_query_tree_children(reply.get());
    const xcb_window_t* last = first + xcb_query_tree_children_length(reply.get());
    return {std::make_reverse_iterator(last), std::make_reverse_iterator(first)};
}

} // namespace

Display* Display::Get() {
    static std::unique_ptr<Display> display;
    if (display) { // taking the waiting events is also what notices the end of the server
        while (Reply<xcb_generic_event_t>(xcb_poll_for_event(display->connection_))) {
        }
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
        cookies[i] =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(kAtomTexts[i].size()), kAtomTexts[i].data());
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
    return reply ? reply->parent : kNoWindow;
}

std::vector<xcb_window_t> Display::Children(xcb_window_t parent) const {
    return TakeChildren(connection_, xcb_query_tree(connection_, parent));
}

// The child of the root the window stands in: its frame, or the window itself.
xcb_window_t Display::TopAncestor(xcb_window_t window) const {
    for (xcb_window_t up = Parent(window); up != kNoWindow && up != root_; up = Parent(up)) window = up;
    return window;
}

std::optional<Place> Display::InnerPlace(xcb_window_t window) const {
    xcb_generic_error_t* error = nullptr;
    const Reply<xcb_get_geometry_reply_t> reply(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), &error));
    std::free(error);
    if (!reply) return std::nullopt;
    return Place{reply->x, reply->y, reply->width + 2 * reply->border_width, reply->height + 2 * reply->border_width,
                 reply->border_width};
}

xcb_window_t Display::At(std::int32_t x, std::int32_t y) const {
    const std::optional<Place> screen = InnerPlace(root_);
    if (!screen || x < 0 || y < 0 || x >= screen->width || y >= screen->height) return kNoWindow;
    xcb_window_t window = root_;
    for (;;) {
        xcb_generic_error_t* error = nullptr;
        const Reply<xcb_translate_coordinates_reply_t> reply(xcb_translate_coordinates_reply(
            connection_,
            xcb_translate_coordinates(connection_, root_, window, static_cast<std::int16_t>(x),
                                      static_cast<std::int16_t>(y)),
            &error));
        std::free(error);
        if (!reply || reply->child == kNoWindow) return window;
        window = reply->child;
    }
}

std::optional<Place> Display::OuterPlace(xcb_window_t window) const {
    return InnerPlace(TopAncestor(window));
}

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
        asked.reserve(level.size());
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
    return walk_.empty() ? kNoWindow : walk_.front();
}

// A window of the walk is followed by the next of the walk, whatever has moved or vanished meanwhile; any other window
// by the sibling below it.
xcb_window_t Display::After(xcb_window_t window) {
    if (walked_ >= walk_.size() || walk_[walked_] != window)
        walked_ = static_cast<std::size_t>(std::find(walk_.begin(), walk_.end(), window) - walk_.begin());
    if (walked_ < walk_.size()) return ++walked_ < walk_.size() ? walk_[walked_] : kNoWindow;
    const std::vector<xcb_window_t> siblings = Children(Parent(window));
    auto at = std::find(siblings.begin(), siblings.end(), window);
    return at != siblings.end() && ++at != siblings.end() ? *at : kNoWindow;
}

} // namespace korlan::x11
