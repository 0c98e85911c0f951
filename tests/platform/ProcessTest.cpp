// Programs really started: stand-ins that write down what they were given.
#include "platform/Process.h"

#include "platform/AsciiText.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/wait.h>
#endif

#include <array>
#include <chrono>
#include <csignal>
#include <thread>

namespace korlan {
namespace {

using test::kOnWindows;
using test::ScopedVariable;
using Words = std::vector<std::string>;

class ProcessTest : public testing::Test {
protected:
    ProcessTest() : path_("PATH", drive_.HostPathOf("BIN") + (kOnWindows ? "" : ":/usr/bin:/bin")) {
        drive_.MakeFolders("BIN");
    }

#ifdef _WIN32
    void MakeProgram(const std::string& path) const {
        drive_.Write(path, "");
        std::filesystem::copy_file(KLN_TEST_PROGRAM, drive_.HostPathOf(path),
                                   std::filesystem::copy_options::overwrite_existing);
    }
#else
    void MakeScript(const std::string& path, const std::string& text) const {
        drive_.Write(path, text);
        drive_.SetMode(path, 0755);
    }
    // A program that writes its arguments, each in brackets, and its own path.
    void MakeProgram(const std::string& path) const {
        const std::string report = drive_.HostPathOf("report");
        MakeScript(path, "#!/bin/sh\n{ printf '[%s]' \"$@\"; printf '\\n%s\\n' \"$0\"; } > " + report + ".part\nmv " +
                             report + ".part " + report + "\n");
    }
#endif

    // The lines of the report.
    Words Started(const std::string& commandLine) const {
        std::filesystem::remove(drive_.HostPathOf("report"));
        StartProgram(commandLine, WindowStyle::MinimizedFocus);
        for (int waited = 0; waited < 5000 && !drive_.Exists("report"); waited += 5)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        Words lines;
        std::istringstream report(drive_.Read("report"));
        for (std::string line; std::getline(report, line);) lines.push_back(line);
        lines.resize(3);
        return lines;
    }
    static std::int32_t StartError(const std::string& commandLine) {
        return test::ErrorOf([&] { StartProgram(commandLine, WindowStyle::NormalFocus); });
    }

    test::TempDrive drive_;
    ScopedVariable path_;
};

TEST_F(ProcessTest, FindsTheProgramAndSplitsItsArguments) {
    const char* const bare = kOnWindows ? "BIN/bare.exe" : "BIN/bare";
    for (const char* path : {"KORLAN/TOOL.EXE", "Two Words/RUN.EXE", bare}) MakeProgram(path);
    const std::tuple<std::string_view, const char*, const char*> cases[] = {
        {"C:\\KORLAN\\TOOL", "KORLAN/TOOL.EXE", kOnWindows ? "" : "[]"},
        {"\"C:\\Two Words\\RUN\" /x", "Two Words/RUN.EXE", "[/x]"},
        {"C:\\Two Words\\RUN.EXE one two", "Two Words/RUN.EXE", "[one][two]"},
        {"bare \"C:\\A B\\C.DLL\" \"\"", bare, "[C:\\A B\\C.DLL][]"},
        {"bare a\\\\b \"c\\\\\" d\\\"e \"f\\\\\\\"g\" h\"i j\"k", bare, "[a\\\\b][c\\][d\"e][f\\\"g][hi jk]"},
    };
    for (const auto& [commandLine, program, arguments] : cases) {
        const Words lines = Started(std::string(commandLine));
        EXPECT_EQ(lines[0], arguments) << commandLine;
        EXPECT_TRUE(EqualNoCase(lines[1], kOnWindows ? drive_.Path(program) : drive_.HostPathOf(program))) << lines[1];
        EXPECT_TRUE(commandLine.ends_with(lines[2])) << lines[2];
    }
    const char* const given = "/sys:\"C:\\A B\"  b";
    EXPECT_EQ(Started(std::string("\"C:\\Two Words\\RUN\"  ") + given)[2], kOnWindows ? given : "");
}

TEST_F(ProcessTest, WhatCannotBeStartedIsAnError) {
    drive_.Write("DATA.EXE", "no program");
    for (const char* line : {"missing-program", "", "\"\" a", "Q:\\X.EXE"}) EXPECT_EQ(StartError(line), 53) << line;
    EXPECT_EQ(StartError("C:\\DATA.EXE"), 5);
#ifndef _WIN32
    MakeScript("ORPHAN", "#!/no/such/interpreter\n");
    EXPECT_EQ(StartError("C:\\ORPHAN"), 53);
#endif
}

#ifdef _WIN32 // what began the line comes again in each process that asks: only what it asks last counts
TEST(ProcessDeathTest, AnInstanceIsKnownUntilItEnds) {
    const auto ask = [] { std::_Exit(AnotherInstanceRunning() ? 1 : 0); };
    EXPECT_EXIT(ask(), testing::ExitedWithCode(0), "");
    AnotherInstanceRunning();
    EXPECT_EXIT(ask(), testing::ExitedWithCode(1), "");
}
#else // the system registers, knows the arguments and keeps the mutex there

TEST_F(ProcessTest, RegistrationIsStartedWhereItCanBe) {
    const char* const command = "regsvr32 /s \"C:\\KORLAN\\My Parts.DLL\"";
    drive_.Write("KORLAN/TOOL.EXE", "MZ, a Windows program");
    {
        const ScopedVariable path("PATH", drive_.HostPathOf("BIN"));
        EXPECT_EQ(StartError(command), 0) << "dropped";
        EXPECT_EQ(StartError("C:\\KORLAN\\TOOL.EXE"), 53);
    }
    MakeProgram("BIN/regsvr32");
    MakeProgram("BIN/wine");
    const Words lines = Started(command);
    EXPECT_EQ(lines[0], "[/s][C:\\KORLAN\\My Parts.DLL]");
    EXPECT_EQ(lines[1], drive_.HostPathOf("BIN/regsvr32"));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(Started("C:\\KORLAN\\TOOL.EXE x")[0], "[" + drive_.HostPathOf("KORLAN/TOOL.EXE") + "][x]");
}

// Runs `body` in a process of its own and returns what it returns.
template <typename Body>
int InAnotherProcess(Body body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(ProcessTest, TheInstanceLockEndsWithItsProcessAndFollowsNoLink) {
    const auto isAnotherRunning = [] { return AnotherInstanceRunning() ? 1 : 0; };
    EXPECT_EQ(InAnotherProcess([&] {
                  const int another = isAnotherRunning();
                  StartProgram("sleep 2", WindowStyle::NormalFocus);
                  return another + 2 * isAnotherRunning();
              }),
              0)
        << "it took itself for another one";
    EXPECT_EQ(InAnotherProcess(isAnotherRunning), 0) << "what it started holds the lock";

    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t first = fork();
    if (first == 0) {
        static_cast<void>(!write(ends[1], isAnotherRunning() ? "1" : "0", 1));
        pause();
    }
    char answer = 0;
    ASSERT_EQ(read(ends[0], &answer, 1), 1);
    EXPECT_EQ(answer, '0');
    EXPECT_EQ(InAnotherProcess([&] { return clearenv() == 0 ? isAnotherRunning() : 9; }), 1) << "another session";
    kill(first, SIGKILL);
    waitpid(first, nullptr, 0);

    struct stat folder {};
    stat(std::filesystem::read_symlink("/proc/self/exe").parent_path().c_str(), &folder);
    const std::string lock = "/tmp/klnupdt-" + std::to_string(geteuid()) + "-" + std::to_string(folder.st_dev) + "-" +
                             std::to_string(folder.st_ino) + ".lock";
    std::filesystem::remove(lock);
    std::filesystem::create_symlink(drive_.HostPathOf("victim"), lock);
    EXPECT_EQ(InAnotherProcess(isAnotherRunning), 0);
    EXPECT_FALSE(drive_.Exists("victim"));
    std::filesystem::remove(lock);
}

TEST(ProcessArguments, AreKnownAsTheyWereGiven) {
    const auto expect = [](std::vector<std::string> words, const char* line) {
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        SetProgramArguments(static_cast<int>(argv.size()), argv.data());
        EXPECT_EQ(ProgramCommandLine(), line);
    };
    expect({"KlnUpdt.EXE", "/sys:C:\\A B", "a.txt"}, "\"/sys:C:\\A B\" \"a.txt\"");
    expect({"KlnUpdt.EXE", "\"/sys:C:\\A\" \"b\""}, "\"/sys:C:\\A\" \"b\"");
    expect({"KlnUpdt.EXE"}, "");
}
#endif

} // namespace
} // namespace korlan
