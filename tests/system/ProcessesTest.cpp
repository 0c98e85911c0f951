// The real program as a process of its own: what a second copy does, and what the programs that it starts are given.
#include "tests/support/Sample.h"
#include "tests/support/XServer.h"

#include <gtest/gtest.h>

#include <fstream>

namespace korlan::test {
namespace {

namespace fs = std::filesystem;

class ProcessesTest : public testing::Test {
protected:
    // The exit code; nothing when the program still runs after five seconds.
    static std::optional<int> Ends(ChildProcess& program) {
        std::optional<int> code;
        Eventually([&] { return (code = program.ExitCode()).has_value(); });
        return code;
    }
    // What a stand-in wrote down: its name and its arguments, one a line. Waits for it.
    static std::string Started(const fs::path& program) {
        const fs::path record = program.string() + ".started";
        if (!Eventually([&] { return fs::exists(record); })) return "not started";
        return {std::istreambuf_iterator<char>(std::ifstream(record).rdbuf()), {}};
    }
    std::vector<std::string> UserFiles() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(sample.Out() / "config"))
            names.push_back(entry.path());
        return names;
    }

    ScopedVariable noDisplay{"DISPLAY", std::nullopt};
    Sample sample;
};

TEST_F(ProcessesTest, ANewerBuildTakesOverFromAFolderWithBlanks) {
    const fs::path folder = sample.Program().parent_path() / "Board Lab";
    fs::rename(sample.Program(), folder);
    std::ofstream(sample.Served() / "KlnUpdt.txt") << "1-1-2200,0:0:0\r\n";
    const fs::path program = folder / "KlnUpdt.EXE";
    ChildProcess wizard({program.c_str()});
    EXPECT_EQ(Ends(wizard), 0);
    EXPECT_EQ(Started(folder / "KLNUPSLF.EXE"), "KLNUPSLF.EXE\n");
}

TEST_F(ProcessesTest, ASecondCopyEndsAtOnceAndTouchesNothing) {
    const fs::path temp = sample.Program() / "Temp";
    const fs::path program = sample.Program() / "KlnUpdt.EXE";
    ChildProcess first({program.c_str()});
    ASSERT_TRUE(Eventually([&] { return fs::exists(temp / "SP3.mdb"); })) << "the last file of the search";
    fs::remove(temp / "Update.mdb");
    const std::string ini = sample.Ini();
    const auto user = UserFiles();

    ChildProcess second({program.c_str()});
    EXPECT_EQ(Ends(second), 0);
    EXPECT_EQ(first.ExitCode(), std::nullopt) << "the first one goes on";
    EXPECT_EQ(sample.Ini(), ini);
    EXPECT_EQ(UserFiles(), user);
    EXPECT_FALSE(fs::exists(temp / "Update.mdb")) << "the second one searched";

    first.End();
    ChildProcess third({program.c_str()});
    EXPECT_TRUE(Eventually([&] { return fs::exists(temp / "Update.mdb"); })) << "nothing is left of the first one";
}

TEST_F(ProcessesTest, ClosingTheWindowAfterARunStartsTheCompanion) {
    const XServer server;
    const ScopedVariable onScreen("QT_QPA_PLATFORM", "xcb");
    const fs::path program = sample.Program() / "KlnUpdt.EXE";
    ChildProcess wizard({program.c_str()});
    const auto recorded = [&] { return sample.Ini().find("LIVEUPDATEFROMWEB") != std::string::npos; };
    for (int attempt = 0; attempt < 100 && !recorded(); ++attempt, usleep(100000)) // Update is off at first
        ChildProcess({"xdotool", "search", "--sync", "--name", "^Korlan Live Update$", "windowfocus", "key", "alt+u"})
            .Wait();
    ASSERT_TRUE(recorded());

    const OtherProgram windowManager;
    for (const xcb_window_t window : windowManager.TopDown())
        if (windowManager.TextProperty(window, "_NET_WM_NAME") == "Korlan Live Update")
            windowManager.AskToClose(window);
    EXPECT_EQ(Ends(wizard), 0);
    EXPECT_EQ(Started(sample.Program() / "KLNUPDTR.exe"), "KLNUPDTR.exe\nKEMO274\n");
}

} // namespace
} // namespace korlan::test
