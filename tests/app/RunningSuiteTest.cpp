// The search for the suite, with the windows of another program on a real display.
#include "app/RunningSuite.h"
#include "app/Settings.h"
#include "app/frmUpdate.h"

#include "tests/support/XServer.h"

#include <gmock/gmock.h>

namespace korlan {
namespace {

using namespace test;

class RunningSuite : public testing::Test {
protected:
    void SetUp() override {
        ResetProgram();
        Suite.SysName = "Korlan";
        frmUpdate.form.SetCaption("Korlan: Live Update"); // a title that would match, were it not our own
    }
    void TearDown() override { ResetProgram(); }
    bool Touched(xcb_window_t window) const { return !other.NumberProperty(window, "WM_HINTS").empty(); }

    XServer server;
    OtherProgram other;
};

TEST_F(RunningSuite, TakesTitlesWithTheNameAndAColon) {
    const struct {
        std::string title;
        bool found;
    } cases[] = {
        {"Korlan: BOARD1", true},
        {"BOARD1 - Korlan:", true},
        {"  Korlan:  ", true},
        {"MyKorlan:x", true},
        {"Korlan", false},
        {"Korlan : BOARD1", false},
        {"korlan: BOARD1", false},
        {"KORLAN: BOARD1", false},
        {"Korlan Live Update", false},
        {"Korlan: Live Update", false},
        {"  Korlan: Live Update ", false},
        {"Korlan: Live Update 2", true},
        {"", false},
        {"   ", false},
        {std::string(300, 'x') + "Korlan: BOARD1", false}, // a title ends at 254 characters
    };
    const auto behind = other.MakeWindow("Editor", true);
    for (const bool shown : {true, false})
        for (const auto& one : cases) {
            const auto window = other.MakeWindow(one.title, shown);
            const auto above = other.MakeWindow("", true);
            bool found = false;
            FindKorlanRunning(found);
            EXPECT_EQ(found, one.found) << one.title;
            EXPECT_EQ(Touched(window), one.found) << one.title;
            EXPECT_EQ(other.TopDown().front(), one.found ? window : above) << one.title;
            EXPECT_EQ(other.Viewable(window), shown) << one.title;
            EXPECT_FALSE(Touched(behind) || Touched(above)) << one.title;
            other.Destroy(window);
            other.Destroy(above);
        }
}

TEST_F(RunningSuite, GoesByTheConfiguredNameAndStopsAtTheTopmost) {
    const auto lower = other.MakeWindow("Tessary: A", true);
    const auto upper = other.MakeWindow("Tessary: B", true);
    bool found = false;
    FindKorlanRunning(found);
    EXPECT_FALSE(found);
    Suite.SysName = "Tessary";
    FindKorlanRunning(found);
    EXPECT_TRUE(found);
    EXPECT_TRUE(Touched(upper));
    EXPECT_FALSE(Touched(lower));
}

TEST_F(RunningSuite, WithoutADisplayNothingRuns) {
    other.MakeWindow("Korlan: BOARD1", true);
    bool found = true;
    server.Stop();
    FindKorlanRunning(found);
    EXPECT_FALSE(found);
}

} // namespace
} // namespace korlan
