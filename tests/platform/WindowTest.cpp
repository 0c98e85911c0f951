// Window on real windows of another program: on Linux of a real X server. What a method did is read back by that
// program.
#include "platform/Window.h"

#include "tests/support/Host.h"
#ifdef _WIN32
#include "tests/win32/OtherProgram.h"
#else
#include "tests/support/XServer.h"
#endif

#include <gmock/gmock.h>

#include <algorithm>

namespace korlan {
namespace {

using namespace test;
using testing::ElementsAre;

std::vector<WindowHandle> Walk() {
    const Window window;
    std::vector<WindowHandle> all;
    for (WindowHandle h = window.GetChildWindow(window.DesktopWindow()); h != 0; h = window.NextWindow(h))
        all.push_back(h);
    return all;
}

using Handles = std::vector<WindowHandle>;

// Those of `all` that are wanted, in their order.
Handles Of(Handles all, const Handles& wanted) {
    std::erase_if(all, [&](WindowHandle one) { return std::count(wanted.begin(), wanted.end(), one) == 0; });
    return all;
}

Window At(WindowHandle handle) {
    Window window;
    window.Handle = handle;
    return window;
}

class BareWindow : public testing::Test {
protected:
#ifndef _WIN32
    XServer server;
#endif
    OtherProgram other;
    const Window any;
};

TEST_F(BareWindow, WalkVisitsEveryTopLevelFromTheTopDown) {
    const auto lowest = other.MakeWindow("lowest", true);
    const auto hidden = other.MakeWindow("hidden", false);
    const auto top = other.MakeWindow("top", true);
    EXPECT_THAT(kOnWindows ? Of(Walk(), {lowest, hidden, top}) : Walk(), ElementsAre(top, hidden, lowest));
}

TEST_F(BareWindow, WalkGoesOnOverWindowsThatVanishOrMove) {
    Handles made;
    for (int i = 0; i < 5; ++i) made.push_back(other.MakeWindow("window " + std::to_string(i), true));
    WindowHandle at = any.GetChildWindow(any.DesktopWindow());
    other.Destroy(made[4]); // the one the walk stands on
    other.Destroy(made[3]); // the one it comes to
    At(made[0]).BringToTop();
    other.MakeWindow("late", true);
    std::vector<std::string> titles;
    while ((at = any.NextWindow(at)) != 0) titles.push_back(At(at).GetText());
    if (kOnWindows) titles.resize(4); // the system's own are below
    EXPECT_THAT(titles, ElementsAre("", "window 2", "window 1", "window 0"));
}

#ifdef _WIN32
TEST_F(BareWindow, TextPlaceAndEndAreTheOwnersToo) {
    const auto window = other.MakeWindow("L\xC3\xB6tstopp", false), shown = other.MakeWindow("", true);
    EXPECT_EQ(At(window).GetText(), "L\xC3\xB6tstopp");
    At(window).SetText(std::string(2000, 'x'));
    EXPECT_EQ(At(window).GetText(), std::string(254, 'x'));
    EXPECT_EQ(At(window).GetWindowClassName(), "KorlanFrame");
    At(window).Move(-7, 40, 300, 150);
    EXPECT_THAT((std::vector{At(window).GetLeft(), At(window).GetTop(), At(window).GetWidth(), At(window).GetHeight()}),
                ElementsAre(-7, 40, 300, 150));
    At(window).BringToTop();
    At(shown).Flash();
    EXPECT_THAT(Of(Walk(), {window, shown}), ElementsAre(window, shown));
    EXPECT_FALSE(IsWindowVisible(OtherProgram::At(window))) << "a hidden window stays hidden";
    At(shown).Terminate();
    EXPECT_TRUE(other.IsAskedToClose(shown) && !other.IsAskedToClose(window));
    At(shown).Destroy();
    EXPECT_TRUE(IsWindow(OtherProgram::At(shown))) << "another program's";
    EXPECT_EQ(At(0x7FFFFFF0).GetText(), "");
}
#else // how a window manager and the clients of a server tell each other
TEST_F(BareWindow, ReadsTitlesInEveryEncoding) {
    const struct {
        std::string newName; // UTF-8
        const char* oldType;
        std::string oldName, text;
    } cases[] = {
        {"Korlan: L\xC3\xB6tstopp", "STRING", "old", "Korlan: L\xC3\xB6tstopp"},
        {"", "STRING", "Korlan: L\xF6tstopp", "Korlan: L\xC3\xB6tstopp"},
        {"", "COMPOUND_TEXT", "L\xF6t\x1b%G\xE2\x82\xAC\x1b%@ \xF6", "L\xC3\xB6t\xE2\x82\xAC \xC3\xB6"},
        {"", "STRING", std::string(1000, 'x'), std::string(254, 'x')},
    };
    for (const auto& one : cases) {
        const auto window = other.MakeWindow(one.newName, false);
        other.SetProperty(window, "WM_NAME", one.oldType, one.oldName);
        EXPECT_EQ(At(window).GetText(), one.text) << one.oldType << " " << one.oldName;
    }
}

TEST_F(BareWindow, SetTextReachesReadersOfEitherName) {
    const auto window = other.MakeWindow("before", false);
    At(window).SetText("L\xC3\xB6tstopp");
    EXPECT_EQ(other.TextProperty(window, "_NET_WM_NAME"), "L\xC3\xB6tstopp");
    EXPECT_EQ(other.TextProperty(window, "WM_NAME"), "L\xC3\xB6tstopp");
    At(window).SetText(std::string(20000000, 'x')); // longer than a request may be: the connection must outlive it
    EXPECT_EQ(At(window).GetText(), std::string(254, 'x'));
    other.SetProperty(window, "WM_CLASS", "STRING", std::string("board\0KorlanFrame\0", 18));
    EXPECT_EQ(At(window).GetWindowClassName(), "KorlanFrame") << "the second of the pair";
    At(window).Move(-7, 40, 300, 150);
    EXPECT_THAT((std::vector{At(window).GetLeft(), At(window).GetTop(), At(window).GetWidth(), At(window).GetHeight()}),
                ElementsAre(-7, 40, 300, 150));
}

TEST_F(BareWindow, BringToTopAndFlashWithoutAManager) {
    const auto hidden = other.MakeWindow("", false);
    const auto shown = other.MakeWindow("", true);
    At(hidden).BringToTop();
    EXPECT_THAT(other.TopDown(), ElementsAre(hidden, shown));
    other.SetNumbers(shown, "WM_HINTS", "WM_HINTS", {1, 1, 0, 0, 0, 0, 0, 0, 0});
    At(shown).Flash();
    EXPECT_THAT(other.NumberProperty(shown, "WM_HINTS"), ElementsAre(0x101, 1, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(BareWindow, OtherProgramsAreAskedToCloseAndNotEnded) {
    const auto polite = other.MakeWindow("", true);
    const auto own = other.MakeWindow("", true);
    other.SetNumbers(polite, "WM_PROTOCOLS", "ATOM", {other.Atom("WM_TAKE_FOCUS"), other.Atom("WM_DELETE_WINDOW")});
    other.SetNumbers(polite, "_NET_WM_PID", "CARDINAL", {1});
    other.SetNumbers(own, "_NET_WM_PID", "CARDINAL", {static_cast<std::uint32_t>(getpid())});
    At(own).Terminate();
    At(polite).Terminate();
    At(polite).Destroy();
    EXPECT_TRUE(other.IsAskedToClose(polite));
    EXPECT_TRUE(other.Exists(polite) && other.Exists(own));
    At(own).Destroy();
    EXPECT_FALSE(other.Exists(own));
}

TEST_F(BareWindow, AServerThatEndsOrNeverWasIsAnEmptyDesktop) {
    other.MakeWindow("Korlan: BOARD1", true);
    const WindowHandle inWalk = any.GetChildWindow(any.DesktopWindow());
    server.Stop();
    EXPECT_EQ(At(inWalk).GetText(), "");
    EXPECT_TRUE(Walk().empty());
    unsetenv("DISPLAY");
    const XServer next; // a display that comes up later is found
    const OtherProgram there;
    const auto made = there.MakeWindow("", true);
    EXPECT_THAT(Walk(), ElementsAre(made));
}

class ManagedWindow : public testing::Test {
protected:
    ManagedWindow() {
        if (!Eventually([&] { return !other.NumberProperty(other.Root(), "_NET_SUPPORTING_WM_CHECK").empty(); }))
            throw std::runtime_error("no window manager");
    }
    xcb_window_t MakeClient(const std::string& title) {
        const auto window = other.MakeWindow(title, true);
        if (!Eventually([&] { return !other.NumberProperty(window, "WM_STATE").empty(); }))
            throw std::runtime_error("the window manager does not take the window");
        return window;
    }
    bool IsActive(xcb_window_t window) {
        return other.NumberProperty(other.Root(), "_NET_ACTIVE_WINDOW") == Handles{window};
    }

    XServer server;
    OtherProgram other;
    ChildProcess manager{{"openbox", "--config-file", "/dev/null", "--sm-disable"}};
};

TEST_F(ManagedWindow, WalkVisitsClientsNotFramesAndHiddenWindowsToo) {
    const auto lower = MakeClient("lower");
    const auto hidden = other.MakeWindow("hidden", false);
    const auto upper = MakeClient("upper");
    At(lower).BringToTop();
    ASSERT_TRUE(Eventually([&] { return IsActive(lower); }));
    EXPECT_THAT(Of(Walk(), {lower, upper, other.Parent(lower), other.Parent(upper)}), ElementsAre(lower, upper));
    EXPECT_THAT(Of(Walk(), {hidden}), ElementsAre(hidden));
    At(upper).Minimize();
    ASSERT_TRUE(Eventually([&] { return other.NumberProperty(upper, "WM_STATE").front() == 3; }));
    EXPECT_THAT(Of(Walk(), {upper}), ElementsAre(upper)) << "a minimised window is still a window";
    At(upper).BringToTop();
    EXPECT_TRUE(Eventually([&] { return IsActive(upper) && other.Viewable(upper); }));
}

TEST_F(ManagedWindow, FlashAsksForAttentionAndBringToTopEndsIt) {
    const auto window = MakeClient("Korlan: BOARD1");
    const auto front = MakeClient("in front");
    At(front).BringToTop();
    ASSERT_TRUE(Eventually([&] { return IsActive(front); }));
    const auto wantsAttention = [&] {
        return testing::Value(other.NumberProperty(window, "_NET_WM_STATE"),
                              testing::Contains(other.Atom("_NET_WM_STATE_DEMANDS_ATTENTION")));
    };
    At(window).Flash();
    EXPECT_TRUE(Eventually(wantsAttention));
    At(window).BringToTop();
    EXPECT_TRUE(Eventually([&] { return IsActive(window) && !wantsAttention(); }));
}
#endif

} // namespace
} // namespace korlan
