// Window against a real X server, without a window manager and with one. What a method did is read back over another
// program's connection.
#include "platform/Window.h"

#include "tests/support/XServer.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

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

std::vector<WindowHandle> Of(const std::vector<WindowHandle>& all, std::vector<WindowHandle> wanted) {
    std::vector<WindowHandle> found;
    for (const WindowHandle one : all)
        if (std::count(wanted.begin(), wanted.end(), one)) found.push_back(one);
    return found;
}

Window At(WindowHandle handle) {
    Window window;
    window.Handle = handle;
    return window;
}

class BareWindow : public testing::Test {
protected:
    XServer server;
    OtherProgram other;
};

TEST_F(BareWindow, WalkVisitsEveryTopLevelFromTheTopDown) {
    const auto lowest = other.MakeWindow("lowest", true);
    const auto hidden = other.MakeWindow("hidden", false);
    const auto top = other.MakeWindow("top", true);
    other.MakeWindow("inside", true, top);
    EXPECT_THAT(Walk(), ElementsAre(top, hidden, lowest));
    EXPECT_EQ(At(0).GetChildWindow(hidden), 0u);
}

TEST_F(BareWindow, WalkGoesOnOverWindowsThatVanishOrMove) {
    std::vector<xcb_window_t> made;
    for (int i = 0; i < 5; ++i) made.push_back(other.MakeWindow("window " + std::to_string(i), true));
    const Window walker;
    WindowHandle at = walker.GetChildWindow(walker.DesktopWindow());
    ASSERT_EQ(at, made[4]);
    other.Destroy(made[4]); // the one the walk stands on
    other.Destroy(made[3]); // the one it comes to
    At(made[0]).BringToTop();
    other.MakeWindow("late", true);
    std::vector<std::string> titles;
    while ((at = walker.NextWindow(at)) != 0) titles.push_back(At(at).GetText());
    EXPECT_THAT(titles, ElementsAre("", "window 2", "window 1", "window 0"));
}

TEST_F(BareWindow, SiblingsOutsideTheWalkFollowTheZOrder) {
    const auto parent = other.MakeWindow("parent", true);
    const auto lower = other.MakeWindow("lower", true, parent);
    const auto upper = other.MakeWindow("upper", true, parent);
    const Window window;
    EXPECT_EQ(window.GetChildWindow(parent), upper);
    EXPECT_EQ(window.NextWindow(upper), lower);
    EXPECT_EQ(window.NextWindow(lower), 0u);
    EXPECT_EQ(window.NextWindow(0x7fffff), 0u) << "a window that does not exist";
}

TEST_F(BareWindow, ReadsTitlesInEveryEncoding) {
    struct Case {
        const char* newName; // UTF-8, or null
        const char* oldType;
        std::string oldName;
        std::string text;
    };
    std::string thousand, cut;
    for (int i = 0; i < 1000; ++i) thousand += "\xE2\x82\xAC";
    cut = thousand.substr(0, 254 * 3);
    const Case cases[] = {
        {nullptr, "STRING", "", ""},
        {"Korlan: L\xC3\xB6tstopp", "STRING", "old", "Korlan: L\xC3\xB6tstopp"},
        {nullptr, "STRING", "Korlan: L\xF6tstopp", "Korlan: L\xC3\xB6tstopp"},
        {nullptr, "UTF8_STRING", "\xE2\x82\xAC", "\xE2\x82\xAC"},
        {nullptr, "COMPOUND_TEXT", "L\xF6t\x1b%G\xE2\x82\xAC\x1b%@ \xF6", "L\xC3\xB6t\xE2\x82\xAC \xC3\xB6"},
        {nullptr, "COMPOUND_TEXT", "a\x1b%G\xE2\x82", "a\xE2\x82"},
        {nullptr, "COMPOUND_TEXT", "\x1b$(BK:\x1b(BK:", "\xEF\xBF\xBD\xEF\xBF\xBDK:"},
        {nullptr, "COMPOUND_TEXT", "\x1b-F\xC1\x1b-A\xC1\x1b", "\xEF\xBF\xBD\xC3\x81"},
        {thousand.c_str(), "STRING", "", cut},
        {nullptr, "STRING", std::string(1000, 'x'), std::string(254, 'x')},
    };
    for (const Case& one : cases) {
        const auto window = other.MakeWindow(one.newName ? one.newName : "", false);
        other.SetProperty(window, "WM_NAME", one.oldType, one.oldName);
        EXPECT_EQ(At(window).GetText(), one.text) << one.oldType << " " << one.oldName;
    }
    EXPECT_EQ(At(0).GetText(), "");
}

TEST_F(BareWindow, SetTextReachesReadersOfEitherName) {
    const auto window = other.MakeWindow("before", false);
    for (const std::string title : {"plain", "L\xC3\xB6tstopp", ""}) {
        At(window).SetText(title);
        EXPECT_EQ(other.TextProperty(window, "_NET_WM_NAME"), title);
        EXPECT_EQ(other.TextProperty(window, "WM_NAME"), title);
        EXPECT_EQ(At(window).GetText(), title);
    }
    At(window).SetText(std::string(20000000, 'x')); // longer than a request may be: the connection must outlive it
    EXPECT_EQ(At(window).GetText(), std::string(254, 'x'));
}

TEST_F(BareWindow, ClassNameIsTheSecondOfThePair) {
    const auto window = other.MakeWindow("", false);
    EXPECT_EQ(At(window).GetWindowClassName(), "");
    for (const auto& [bytes, name] : {std::pair{std::string("board\0KorlanFrame\0", 18), "KorlanFrame"},
                                      {std::string("board\0Frame", 11), "Frame"},
                                      {std::string("only"), ""}}) {
        other.SetProperty(window, "WM_CLASS", "STRING", bytes);
        EXPECT_EQ(At(window).GetWindowClassName(), name);
    }
}

TEST_F(BareWindow, MoveAndThePlaceItReports) {
    const auto window = other.MakeWindow("", true);
    const std::uint32_t border = 3;
    xcb_configure_window(other.Connection(), window, XCB_CONFIG_WINDOW_BORDER_WIDTH, &border);
    other.Sync();
    At(window).Move(-7, 40, 300, 150);
    EXPECT_THAT(other.FramePlace(window), ElementsAre(-7, 40, 300, 150));
    EXPECT_EQ(At(window).GetLeft(), -7);
    EXPECT_EQ(At(window).GetTop(), 40);
    EXPECT_EQ(At(window).GetWidth(), 300);
    EXPECT_EQ(At(window).GetHeight(), 150);
    At(window).Move(0, 0, 0, -5);
    EXPECT_THAT(other.FramePlace(window), ElementsAre(0, 0, 7, 7))
        << "a window has at least one pixel inside its border";
    EXPECT_EQ(At(0x7fffff).GetWidth(), 0);
}

TEST_F(BareWindow, FindsTheInnermostWindowUnderAPoint) {
    const auto outer = other.MakeWindow("", true);
    const auto inner = other.MakeWindow("", true, outer); // at 20, 40 of the screen
    other.MakeWindow("hidden", false);
    const Window window;
    EXPECT_EQ(window.GetFromXY(15, 25), outer);
    EXPECT_EQ(window.GetFromXY(25, 45), inner);
    EXPECT_EQ(window.GetFromXY(900, 700), window.DesktopWindow());
    EXPECT_EQ(window.GetFromXY(-1, 5), 0u);
    EXPECT_EQ(window.GetFromXY(5, 768), 0u);
    EXPECT_EQ(window.GetFromXY(70000, 5), 0u);
}

TEST_F(BareWindow, BringToTopRaisesAndKeepsHiddenWindowsHidden) {
    const auto hidden = other.MakeWindow("", false);
    const auto shown = other.MakeWindow("", true);
    const auto top = other.MakeWindow("", true);
    At(shown).BringToTop();
    EXPECT_THAT(other.TopDown(), ElementsAre(shown, top, hidden));
    At(hidden).BringToTop();
    EXPECT_THAT(other.TopDown(), ElementsAre(hidden, shown, top));
    EXPECT_FALSE(other.Viewable(hidden));
}

TEST_F(BareWindow, FlashSetsTheUrgencyFlagBesideTheOtherHints) {
    const auto window = other.MakeWindow("", true);
    other.SetNumbers(window, "WM_HINTS", "WM_HINTS", {1, 1, 0, 0, 0, 0, 0, 0, 0});
    At(window).Flash();
    EXPECT_THAT(other.NumberProperty(window, "WM_HINTS"), ElementsAre(0x101, 1, 0, 0, 0, 0, 0, 0, 0));
}

TEST_F(BareWindow, TerminateAsksAndNeverForces) {
    const auto polite = other.MakeWindow("", true);
    const auto plain = other.MakeWindow("", true);
    other.SetNumbers(polite, "WM_PROTOCOLS", "ATOM", {other.Atom("WM_TAKE_FOCUS"), other.Atom("WM_DELETE_WINDOW")});
    At(plain).Terminate();
    At(polite).Terminate();
    EXPECT_TRUE(other.WaitFor(XCB_CLIENT_MESSAGE, polite));
    EXPECT_TRUE(other.Exists(polite));
    EXPECT_TRUE(other.Exists(plain));
}

TEST_F(BareWindow, DestroyTakesOwnWindowsOnly) {
    const auto own = other.MakeWindow("", true);
    const auto foreign = other.MakeWindow("", true);
    other.SetNumbers(own, "_NET_WM_PID", "CARDINAL", {static_cast<std::uint32_t>(getpid())});
    other.SetNumbers(foreign, "_NET_WM_PID", "CARDINAL", {1});
    At(own).Destroy();
    At(foreign).Destroy();
    EXPECT_FALSE(other.Exists(own));
    EXPECT_TRUE(other.Exists(foreign));
}

TEST_F(BareWindow, ParentMenuAndRedraw) {
    const auto parent = other.MakeWindow("", true);
    const auto child = other.MakeWindow("", true);
    At(child).SetWindowParent(parent);
    EXPECT_EQ(other.Parent(child), parent);
    At(child).SetWindowParent(0);
    EXPECT_EQ(other.Parent(child), other.Root());

    EXPECT_EQ(At(child).GetWindowMenu(), 0u);
    At(child).SetWindowMenu(77);
    EXPECT_EQ(At(child).GetWindowMenu(), 77u);
    EXPECT_EQ(At(parent).GetWindowMenu(), 0u);

    other.Sync();
    while (void* event = xcb_poll_for_event(other.Connection())) free(event);
    At(child).DrawWindowMenuBar();
    EXPECT_TRUE(other.WaitFor(XCB_EXPOSE, child));
}

TEST_F(BareWindow, AServerThatEndsOrNeverWasIsAnEmptyDesktop) {
    other.MakeWindow("Korlan: BOARD1", true);
    ASSERT_EQ(Walk().size(), 1u);
    const Window window;
    const WindowHandle inWalk = window.GetChildWindow(window.DesktopWindow());
    server.Stop();
    EXPECT_EQ(At(inWalk).GetText(), "");
    At(inWalk).Flash();
    At(inWalk).BringToTop();
    EXPECT_TRUE(Walk().empty());
    unsetenv("DISPLAY");
    EXPECT_TRUE(Walk().empty());
    EXPECT_EQ(window.DesktopWindow(), 0u);
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
        return other.NumberProperty(other.Root(), "_NET_ACTIVE_WINDOW") == std::vector<std::uint32_t>{window};
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
    const std::vector<WindowHandle> walk = Walk();
    EXPECT_THAT(Of(walk, {lower, upper}), ElementsAre(lower, upper));
    EXPECT_THAT(Of(walk, {hidden}), ElementsAre(hidden));
    EXPECT_TRUE(Of(walk, {other.Frame(lower), other.Frame(upper)}).empty());

    At(upper).Minimize();
    ASSERT_TRUE(Eventually([&] { return other.NumberProperty(upper, "WM_STATE").front() == 3; }));
    EXPECT_THAT(Of(Walk(), {upper}), ElementsAre(upper)) << "a minimised window is still a window";
    At(upper).BringToTop();
    EXPECT_TRUE(Eventually([&] { return IsActive(upper) && other.Viewable(upper); }));
}

TEST_F(ManagedWindow, FlashAsksForAttentionAndBringToTopEndsIt) {
    const auto window = MakeClient("Korlan: BOARD1");
    const auto other1 = MakeClient("in front");
    At(other1).BringToTop();
    ASSERT_TRUE(Eventually([&] { return IsActive(other1); }));
    const auto wantsAttention = [&] {
        const auto states = other.NumberProperty(window, "_NET_WM_STATE");
        return std::count(states.begin(), states.end(), other.Atom("_NET_WM_STATE_DEMANDS_ATTENTION")) > 0;
    };
    ASSERT_FALSE(wantsAttention());
    At(window).Flash();
    EXPECT_TRUE(Eventually(wantsAttention));
    At(window).BringToTop();
    EXPECT_TRUE(Eventually([&] { return IsActive(window) && !wantsAttention(); }));
    EXPECT_THAT(Of(other.TopDown(), {other.Frame(window), other.Frame(other1)}),
                ElementsAre(other.Frame(window), other.Frame(other1)));
}

TEST_F(ManagedWindow, MoveCountsTheFrame) {
    const auto window = MakeClient("");
    At(window).Move(50, 60, 400, 300);
    EXPECT_TRUE(Eventually([&] { return other.FramePlace(window) == std::vector<std::int32_t>{50, 60, 400, 300}; }));
    EXPECT_EQ(At(window).GetLeft(), 50);
    EXPECT_EQ(At(window).GetTop(), 60);
    EXPECT_EQ(At(window).GetWidth(), 400);
    EXPECT_EQ(At(window).GetHeight(), 300);
}

} // namespace
} // namespace korlan
