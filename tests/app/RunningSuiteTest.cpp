// The search for the suite, with the windows of another program on a real display.
#include "app/RunningSuite.h"
#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "tests/support/ResetProgram.h"

#include "tests/support/XServer.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

using namespace test;

bool Found() {
    bool found = true;
    FindKorlanRunning(found);
    return found;
}

TEST(RunningSuite, IsTheTopmostWindowWithTheNameAndAColon) {
    XServer server;
    const OtherProgram other;
    const auto touched = [&](xcb_window_t window) { return !other.NumberProperty(window, "WM_HINTS").empty(); };
    ResetProgram();
    Settings.SysName = "Tessary";
    frmUpdate.form.SetCaption("Tessary: Live Update"); // a title that would match, were it not our own
    const std::pair<std::string, bool> cases[] = {
        {"  Tessary: Live Update 2 ", true},
        {"MyTessary:x", true},
        {"TESSARY: Tessary : Korlan:", false},
        {"  Tessary: Live Update ", false},
        {"", false},
        {std::string(300, 'x') + "Tessary: BOARD1", false}, // a title ends at 254 characters
    };
    for (const bool shown : {true, false})
        for (const auto& [title, found] : cases) {
            const auto behind = other.MakeWindow(title, true);
            const auto window = other.MakeWindow(title, shown);
            const auto above = other.MakeWindow("Editor", true);
            EXPECT_EQ(Found(), found) << title;
            EXPECT_EQ(touched(window), found) << title;
            EXPECT_EQ(other.TopDown().front(), found ? window : above) << title;
            EXPECT_EQ(other.Viewable(window), shown) << title;
            EXPECT_FALSE(touched(behind) || touched(above)) << title;
            for (const auto one : {behind, window, above}) other.Destroy(one);
        }
    other.MakeWindow("Tessary: A", true);
    server.Stop();
    EXPECT_FALSE(Found()) << "without a display nothing runs";
    ResetProgram();
}

} // namespace
} // namespace korlan
