// The search for the suite, with the windows of another program on a real display.
#include "app/RunningSuite.h"
#include "app/Settings.h"
#include "app/frmUpdate.h"

#include "tests/support/XServer.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

using namespace test;

class RunningSuite : public testing::Test {
protected:
    void SetUp() override {
        ResetProgram();
        Suite.SysName = "Tessary";
        frmUpdate.form.SetCaption("Tessary: Live Update"); // a title that would match, were it not our own
    }
    void TearDown() override { ResetProgram(); }
    bool Touched(xcb_window_t window) const { return !other.NumberProperty(window, "WM_HINTS").empty(); }
    static bool Found() {
        bool found = true;
        FindKorlanRunning(found);
        return found;
    }

    XServer server;
    OtherProgram other;
};

TEST_F(RunningSuite, TakesTitlesWithTheNameAndAColon) {
    const std::pair<std::string, bool> cases[] = {
        {"Tessary: BOARD1", true},
        {"  Tessary:  ", true},
        {"MyTessary:x", true},
        {"Tessary : BOARD1", false},
        {"TESSARY: BOARD1", false},
        {"Korlan: BOARD1", false}, // the configured name counts
        {"  Tessary: Live Update ", false},
        {"Tessary: Live Update 2", true},
        {"", false},
        {std::string(300, 'x') + "Tessary: BOARD1", false}, // a title ends at 254 characters
    };
    const auto behind = other.MakeWindow("Editor", true);
    for (const bool shown : {true, false})
        for (const auto& [title, found] : cases) {
            const auto window = other.MakeWindow(title, shown);
            const auto above = other.MakeWindow("", true);
            EXPECT_EQ(Found(), found) << title;
            EXPECT_EQ(Touched(window), found) << title;
            EXPECT_EQ(other.TopDown().front(), found ? window : above) << title;
            EXPECT_EQ(other.Viewable(window), shown) << title;
            EXPECT_FALSE(Touched(behind) || Touched(above)) << title;
            other.Destroy(window);
            other.Destroy(above);
        }
}

TEST_F(RunningSuite, StopsAtTheTopmostAndNothingRunsWithoutADisplay) {
    const auto lower = other.MakeWindow("Tessary: A", true);
    const auto upper = other.MakeWindow("Tessary: B", true);
    EXPECT_TRUE(Found());
    EXPECT_TRUE(Touched(upper) && !Touched(lower));
    server.Stop();
    EXPECT_FALSE(Found());
}

} // namespace
} // namespace korlan
