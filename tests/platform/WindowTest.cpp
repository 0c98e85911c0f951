// Window against a real X server, without a window manager and with one. What a method did is read back over another
// program's connection.
#include "platform/Window.h"

#include "tests/support/XServer.h"

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

std::vector<std::int32_t> ReportedPlace(WindowHandle handle) {
    const Window window = At(handle);
    return {window.GetLeft(), window.GetTop(), window.GetWidth(), window.GetHeight()};
}

class BareWindow : public testing::Test {
protected:
    XServer server;
    OtherProgram other;
    const Window any; // for what asks about no window of its own
};

TEST_F(BareWindow, WalkVisitsEveryTopLevelFromTheTopDown) {
    const auto lowest = other.MakeWindow("lowest", true);
    const auto hidden = other.MakeWindow("hidden", false);
    const auto top = other.MakeWindow("top", true);
    const auto lower = other.MakeWindow("lower inside", true, top);
    const auto upper = other.MakeWindow("upper inside", true, top);
    EXPECT_THAT(Walk(), ElementsAre(top, hidden, lowest));
    EXPECT_EQ(any.GetChildWindow(hidden), 0u);
    EXPECT_EQ(any.GetChildWindow(top), upper); // outside the walk
    EXPECT_EQ(any.NextWindow(upper), lower);
    EXPECT_EQ(any.NextWindow(lower), 0u);
    EXPECT_EQ(any.NextWindow(0x7fffff), 0u) << "a window that does not exist";
}

TEST_F(BareWindow, WalkGoesOnOverWindowsThatVanishOrMove) {
    Handles made;
    for (int i = 0; i < 5; ++i) made.push_back(other.MakeWindow("window " + std::to_string(i), true));
    WindowHandle at = any.GetChildWindow(any.DesktopWindow());
    ASSERT_EQ(at, made[4]);
    other.Destroy(made[4]); // the one the walk stands on
    other.Destroy(made[3]); // the one it comes to
    At(made[0]).BringToTop();
    other.MakeWindow("late", true);
    std::vector<std::string> titles;
    while ((at = any.NextWindow(at)) != 0) titles.push_back(At(at).GetText());
    EXPECT_THAT(titles, ElementsAre("", "window 2", "window 1", "window 0"));
}

TEST_F(BareWindow, ReadsTitlesInEveryEncoding) {
    std::string thousand;
    for (int i = 0; i < 1000; ++i) thousand += "\xE2\x82\xAC";
    const struct {
        std::string newName; // UTF-8
        const char* oldType;
        std::string oldName, text;
    } cases[] = {
        {"", "STRING", "", ""},
        {"Korlan: L\xC3\xB6tstopp", "STRING", "old", "Korlan: L\xC3\xB6tstopp"},
        {"", "STRING", "Korlan: L\xF6tstopp", "Korlan: L\xC3\xB6tstopp"},
        {"", "UTF8_STRING", "\xE2\x82\xAC", "\xE2\x82\xAC"},
        {"", "COMPOUND_TEXT", "L\xF6t\x1b%G\xE2\x82\xAC\x1b%@ \xF6", "L\xC3\xB6t\xE2\x82\xAC \xC3\xB6"},
        {"", "COMPOUND_TEXT", "a\x1b%G\xE2\x82", "a\xE2\x82"},
        {"", "COMPOUND_TEXT", "\x1b$(BK:\x1b(BK:", "\xEF\xBF\xBD\xEF\xBF\xBDK:"},
        {"", "COMPOUND_TEXT", "\x1b-F\xC1\x1b-A\xC1\x1b", "\xEF\xBF\xBD\xC3\x81"},
        {thousand, "STRING", "", thousand.substr(0, 254 * 3)},
        {"", "STRING", std::string(1000, 'x'), std::string(254, 'x')},
    };
    for (const auto& one : cases) {
        const auto window = other.MakeWindow(one.newName, false);
        other.SetProperty(window, "WM_NAME", one.oldType, one.oldName);
        EXPECT_EQ(At(window).GetText(), one.text) << one.oldType << " " << one.oldName;
    }
    EXPECT_EQ(At(0).GetText(), "");
}

TEST_F(BareWindow, SetTextReachesReadersOfEitherNameAndClassNamesAreRead) {
    const auto window = other.MakeWindow("before", false);
    for (const std::string title : {"plain", "L\xC3\xB6tstopp", ""}) {
        At(window).SetText(title);
        EXPECT_EQ(other.TextProperty(window, "_NET_WM_NAME"), title);
        EXPECT_EQ(other.TextProperty(window, "WM_NAME"), title);
        EXPECT_EQ(At(window).GetText(), title);
    }
    At(window).SetText(std::string(20000000, 'x')); // longer than a request may be: the connection must outlive it
    EXPECT_EQ(At(window).GetText(), std::string(254, 'x'));

    for (const auto& [bytes, name] : {std::pair{std::string("board\0KorlanFrame\0", 18), "KorlanFrame"},
                                      {std::string("board\0Frame", 11), "Frame"},
                                      {std::string("only"), ""}}) {
        other.SetProperty(window, "WM_CLASS", "STRING", bytes);
        EXPECT_EQ(At(window).GetWindowClassName(), name) << "the second of the pair";
    }
}

TEST_F(BareWindow, MoveThePlaceItReportsAndWhatIsAtAPoint) {
    const auto window = other.MakeWindow("", true);
    const std::uint32_t border = 3;
    xcb_configure_window(other.Connection(), window, XCB_CONFIG_WINDOW_BORDER_WIDTH, &border);
    other.Sync();
    At(window).Move(-7, 40, 300, 150);
    EXPECT_THAT(other.FramePlace(window), ElementsAre(-7, 40, 300, 150));
    EXPECT_THAT(ReportedPlace(window), ElementsAre(-7, 40, 300, 150));
    At(window).Move(0, 0, 0, -5);
    EXPECT_THAT(other.FramePlace(window), ElementsAre(0, 0, 7, 7)) << "one pixel at least inside its border";
    EXPECT_EQ(At(0x7fffff).GetWidth(), 0);

    const auto inner = other.MakeWindow("", true, other.MakeWindow("", true)); // at 20, 40 of the screen
    other.MakeWindow("hidden", false);
    EXPECT_EQ(any.GetFromXY(25, 45), inner);
    EXPECT_EQ(any.GetFromXY(15, 25), other.Parent(inner));
    EXPECT_EQ(any.GetFromXY(900, 700), any.DesktopWindow());
    for (const auto& [x, y] : {std::pair{-1, 5}, {5, 768}, {70000, 5}}) EXPECT_EQ(any.GetFromXY(x, y), 0u) << x;
}

TEST_F(BareWindow, BringToTopAndFlashWithoutAManager) {
    const auto hidden = other.MakeWindow("", false);
    const auto shown = other.MakeWindow("", true);
    At(hidden).BringToTop();
    EXPECT_THAT(other.TopDown(), ElementsAre(hidden, shown));
    EXPECT_FALSE(other.Viewable(hidden));
    other.SetNumbers(shown, "WM_HINTS", "WM_HINTS", {1, 1, 0, 0, 0, 0, 0, 0, 0});
    At(shown).Flash();
    EXPECT_THAT(other.NumberProperty(shown, "WM_HINTS"), ElementsAre(0x101, 1, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(BareWindow, ParentMenuRedrawTerminateAndDestroy) {
    const auto polite = other.MakeWindow("", true);
    const auto own = other.MakeWindow("", true);
    other.SetNumbers(polite, "WM_PROTOCOLS", "ATOM", {other.Atom("WM_TAKE_FOCUS"), other.Atom("WM_DELETE_WINDOW")});
    other.SetNumbers(polite, "_NET_WM_PID", "CARDINAL", {1});
    other.SetNumbers(own, "_NET_WM_PID", "CARDINAL", {static_cast<std::uint32_t>(getpid())});
    At(own).Terminate();
    At(polite).Terminate();
    At(polite).Destroy();
    EXPECT_TRUE(other.WaitFor(XCB_CLIENT_MESSAGE, polite));
    EXPECT_TRUE(other.Exists(polite) && other.Exists(own));
    At(own).SetWindowParent(polite);
    EXPECT_EQ(other.Parent(own), polite);
    At(own).SetWindowParent(0);
    EXPECT_EQ(other.Parent(own), other.Root());
    At(own).SetWindowMenu(77);
    EXPECT_EQ(At(own).GetWindowMenu(), 77u);
    EXPECT_EQ(At(polite).GetWindowMenu(), 0u);
    while (void* event = xcb_poll_for_event(other.Connection())) free(event);
    At(own).DrawWindowMenuBar();
    EXPECT_TRUE(other.WaitFor(XCB_EXPOSE, own));
    At(own).Destroy();
    EXPECT_FALSE(other.Exists(own));
}

TEST_F(BareWindow, AServerThatEndsOrNeverWasIsAnEmptyDesktop) {
    other.MakeWindow("Korlan: BOARD1", true);
    const WindowHandle inWalk = any.GetChildWindow(any.DesktopWindow());
    ASSERT_EQ(At(inWalk).GetText(), "Korlan: BOARD1");
    server.Stop();
    EXPECT_EQ(At(inWalk).GetText(), "");
    At(inWalk).Flash();
    At(inWalk).BringToTop();
    EXPECT_TRUE(Walk().empty());
    unsetenv("DISPLAY");
    EXPECT_EQ(any.DesktopWindow(), 0u);
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
    ASSERT_NE(other.Parent(upper), other.Root()) << "this window manager puts no frames around clients";
    At(lower).BringToTop();
    ASSERT_TRUE(Eventually([&] { return IsActive(lower); }));
    const Handles walk = Walk();
    EXPECT_THAT(Of(walk, {lower, upper, other.Frame(lower), other.Frame(upper)}), ElementsAre(lower, upper));
    EXPECT_THAT(Of(walk, {hidden}), ElementsAre(hidden));

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
    ASSERT_FALSE(wantsAttention());
    At(window).Flash();
    EXPECT_TRUE(Eventually(wantsAttention));
    At(window).BringToTop();
    EXPECT_TRUE(Eventually([&] { return IsActive(window) && !wantsAttention(); }));
    EXPECT_THAT(Of(other.TopDown(), {other.Frame(window), other.Frame(front)}),
                ElementsAre(other.Frame(window), other.Frame(front)));
}

TEST_F(ManagedWindow, MoveCountsTheFrame) {
    const auto window = MakeClient("");
    const std::vector<std::int32_t> place{50, 60, 400, 300};
    At(window).Move(50, 60, 400, 300);
    EXPECT_TRUE(Eventually([&] { return other.FramePlace(window) == place; }));
    EXPECT_EQ(ReportedPlace(window), place);
}

} // namespace
} // namespace korlan
