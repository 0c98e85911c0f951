// A connection to the X server of our own: properties, places, the tree of windows. Opened at first use and kept; when
// its server has gone it is dropped and the next call tries $DISPLAY afresh. Other programs' windows vanish at any
// moment, so every request may fail, and a failed request is an empty answer.
#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korlan::x11 {

constexpr xcb_window_t kNoWindow = XCB_WINDOW_NONE;

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

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

struct Property {
    xcb_atom_t type = XCB_ATOM_NONE;
    std::string bytes; // values of 32 bits stand in host order
    std::uint32_t Value(std::size_t index) const {
        std::uint32_t value = 0;
        if ((index + 1) * sizeof value <= bytes.size())
            bytes.copy(reinterpret_cast<char*>(&value), sizeof value, index * sizeof value);
        return value;
    }
    std::size_t Count() const { return bytes.size() / sizeof(std::uint32_t); }
};

struct Place {
    std::int32_t left = 0, top = 0, width = 0, height = 0; // with the border
    std::int32_t border = 0;
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
    void Write(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
               const std::vector<std::uint32_t>& values) const;
    void Finish(xcb_void_cookie_t request) const {
        Reply<xcb_generic_error_t>(xcb_request_check(connection_, request));
    }

    bool ManagerSpeaks(AtomName hint) const;
    bool IsManaged(xcb_window_t window) const { return Read(window, Atom(kWmState), 8).type != XCB_ATOM_NONE; }
    void Send(xcb_window_t to, std::uint32_t mask, xcb_window_t about, AtomName type,
              std::array<std::uint32_t, 5> data) const;
    void TellManager(xcb_window_t about, AtomName type, std::array<std::uint32_t, 5> data) const {
        Send(root_, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT, about, type, data);
    }
    void Configure(xcb_window_t window, std::uint16_t mask, const std::vector<std::uint32_t>& values) const {
        Finish(xcb_configure_window_checked(connection_, window, mask, values.data()));
    }

    std::optional<Place> OuterPlace(xcb_window_t window) const; // of its frame, on the screen
    std::optional<Place> InnerPlace(xcb_window_t window) const; // its own, within its parent
    xcb_window_t TopAncestor(xcb_window_t window) const;
    xcb_window_t Parent(xcb_window_t window) const;
    std::vector<xcb_window_t> Children(xcb_window_t parent) const; // top of the z-order first
    xcb_window_t At(std::int32_t x, std::int32_t y) const;         // innermost window at a point of the screen

    xcb_window_t FirstTopLevel();            // takes the top-level windows anew, top of the z-order first
    xcb_window_t After(xcb_window_t window); // the next of them; of any other window, the sibling below it

private:
    Display(xcb_connection_t* connection, xcb_window_t root);
    std::vector<xcb_window_t> TopLevels() const;

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::array<xcb_atom_t, kAtomCount> atoms_{};
    std::vector<xcb_window_t> walk_; // the top-level windows as they stood when the walk began
    std::size_t walked_ = 0;         // index of the window the walk has reached
};

// Both halves of a reading, so that several can be asked before the first is taken.
xcb_get_property_cookie_t AskProperty(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
                                      std::uint32_t longestBytes);
Property TakeProperty(xcb_connection_t* connection, xcb_get_property_cookie_t cookie);

} // namespace korlan::x11
