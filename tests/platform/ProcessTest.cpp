// Programs really started: stand-ins that write down what they were given.
#include "platform/Process.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

namespace korlan {
namespace {

using test::ScopedVariable;
using Words = std::vector<std::string>;

class ProcessTest : public testing::Test {
protected:
    ProcessTest() : path_("PATH", drive_.HostPathOf("BIN") + ":/usr/bin:/bin") { drive_.MakeFolders("BIN"); }

    void MakeScript(const std::string& path, const std::string& text) const {
        drive_.Write(path, text);
        drive_.SetMode(path, 0755);
    }
    // A program that writes its arguments, each in brackets, and facts about itself.
    void MakeProgram(const std::string& path) const {
        const std::string report = drive_.HostPathOf("report");
        MakeScript(path, "#!/bin/sh\n{ printf '[%s]' \"$@\"; printf '\\n%s\\n%s\\n%s\\n' \"$0\" \"$(pwd)\" "
                         "\"$(readlink /proc/$$/fd/0)\"; ls /proc/$$/fd | tr '\\n' ' '; } > " +
                             report + ".part\nmv " + report + ".part " + report + "\n");
    }

    // The lines of the report: arguments, program, folder, standard input, open files.
    Words Started(const std::string& commandLine) const {
        std::filesystem::remove(drive_.HostPathOf("report"));
        StartProgram(commandLine, WindowStyle::MinimizedFocus);
        for (int waited = 0; waited < 5000 && !drive_.Exists("report"); waited += 5)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        Words lines;
        std::istringstream report(drive_.Read("report"));
        for (std::string line; std::getline(report, line);) lines.push_back(line);
        lines.resize(5);
        return lines;
    }
    static std::int32_t StartError(const std::string& commandLine) {
        return test::ErrorOf([&] { StartProgram(commandLine, WindowStyle::NormalFocus); });
    }

    test::TempDrive drive_;
    ScopedVariable path_;
    ScopedVariable runtime_{"XDG_RUNTIME_DIR", drive_.HostPathOf("BIN")};
};

TEST_F(ProcessTest, FindsTheProgramAndSplitsItsArguments) {
    for (const char* path : {"KORLAN/TOOL.EXE", "Two Words/RUN.EXE", "Two/plain", "BIN/bare"}) MakeProgram(path);
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"C:\\KORLAN\\TOOL", "KORLAN/TOOL.EXE", "[]"},
        {"  \"c:\\korlan\\tool.exe\"  a  ", "KORLAN/TOOL.EXE", "[a]"},
        {"\"C:\\Two Words\\RUN\" /x", "Two Words/RUN.EXE", "[/x]"},
        {"C:\\Two Words\\RUN.EXE one two", "Two Words/RUN.EXE", "[one][two]"},
        {"C:\\Two\\plain C:\\Two Words", "Two/plain", "[C:\\Two][Words]"},
        {"bare \"C:\\A B\\C.DLL\" \"\"", "BIN/bare", "[C:\\A B\\C.DLL][]"},
        {"bare a\\\\b \"c\\\\\" d\\\"e \"f\\\\\\\"g\" h\"i j\"k", "BIN/bare", "[a\\\\b][c\\][d\"e][f\\\"g][hi jk]"},
        {"bare \"a\"\"b\" \"c d", "BIN/bare", "[a\"b][c d]"},
    };
    for (const auto& [commandLine, program, arguments] : cases) {
        const Words lines = Started(commandLine);
        EXPECT_EQ(lines[0], arguments) << commandLine;
        EXPECT_EQ(lines[1], drive_.HostPathOf(program)) << commandLine;
    }
}

TEST_F(ProcessTest, AProgramRunsOnItsOwn) {
    MakeProgram("BIN/bare");
    std::filesystem::current_path(drive_.HostPathOf("BIN"));
    const int leak = fcntl(STDERR_FILENO, F_DUPFD, 77); // without close-on-exec; above the shell's own
    const Words lines = Started("bare");
    EXPECT_EQ(lines[2], drive_.HostPathOf("BIN"));
    EXPECT_EQ(lines[3], "/dev/null");
    EXPECT_TRUE(lines[4].starts_with("0 ")) << lines[4];
    EXPECT_EQ((" " + lines[4]).find(" " + std::to_string(leak) + " "), std::string::npos) << lines[4];
    close(leak);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";

    const auto before = std::chrono::steady_clock::now();
    StartProgram("sleep 2", WindowStyle::NormalFocus);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1)) << "it was waited for";
}

TEST_F(ProcessTest, WhatCannotBeStartedIsAnError) {
    drive_.Write("DATA.EXE", "no program");
    MakeScript("BROKEN.EXE", "no program either");
    MakeScript("ORPHAN", "#!/no/such/interpreter\n");
    drive_.MakeFolders("FOLDER.EXE");
    for (const char* line : {"missing-program", "", "\"\" a", "Q:\\X.EXE", "C:\\FOLDER.EXE", "C:\\ORPHAN"})
        EXPECT_EQ(StartError(line), 53) << line;
    for (const char* line : {"C:\\DATA.EXE", "C:\\BROKEN.EXE"}) EXPECT_EQ(StartError(line), 5) << line;
    EXPECT_EQ(StartError("\"C:\\MISSING.EXE\" /RegServer"), 53);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST_F(ProcessTest, RegistrationIsStartedWhereItCanBe) {
    const char* const command = "regsvr32 /s \"C:\\KORLAN\\My Parts.DLL\"";
    const char* const server = "\"C:\\KORLAN\\KLNDIAGR.EXE\" /RegServer";
    for (const char* path : {"KORLAN/KLNDIAGR.EXE", "KORLAN/TOOL.EXE"}) drive_.Write(path, "MZ, a Windows program");
    {
        const ScopedVariable path("PATH", drive_.HostPathOf("BIN"));
        EXPECT_EQ(StartError(command), 0) << "dropped";
        EXPECT_EQ(StartError(server), 0) << "dropped";
        EXPECT_EQ(StartError("C:\\KORLAN\\TOOL.EXE"), 53);
    }
    MakeProgram("BIN/regsvr32");
    MakeProgram("BIN/wine");
    const Words lines = Started(command);
    EXPECT_EQ(lines[0], "[/s][C:\\KORLAN\\My Parts.DLL]");
    EXPECT_EQ(lines[1], drive_.HostPathOf("BIN/regsvr32"));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(Started("C:\\KORLAN\\TOOL.EXE x")[0], "[" + drive_.HostPathOf("KORLAN/TOOL.EXE") + "][x]");
    EXPECT_EQ(Started(server)[0], "[" + drive_.HostPathOf("KORLAN/KLNDIAGR.EXE") + "][/RegServer]");
}

TEST_F(ProcessTest, TheCommandLineKeepsArgumentsApart) {
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{"klnupdt"}, ""},
        {{"klnupdt", "a", "", "b c"}, "\"a\" \"\" \"b c\""},
        {{"klnupdt", "\"C:\\A B\" x", "y"}, "\"C:\\A B\" x \"y\""},
    };
    for (auto [argv, line] : cases) {
        SetProgramArguments(static_cast<int>(argv.size()), const_cast<char**>(argv.data()));
        EXPECT_EQ(ProgramCommandLine(), line);
    }
    EXPECT_THAT(ProgramPath(), testing::EndsWith("\\ProcessTest"));
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

int IsAnotherRunning() {
    return AnotherInstanceRunning() ? 1 : 0;
}

TEST_F(ProcessTest, OneInstanceOnly) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t first = fork();
    if (first == 0) {
        const char answers = static_cast<char>(IsAnotherRunning() + 2 * IsAnotherRunning());
        _exit(write(ready[1], &answers, 1) == 1 ? pause() : 1);
    }
    char answers = 9;
    EXPECT_EQ(read(ready[0], &answers, 1), 1);
    EXPECT_EQ(answers, 0) << "it took itself for another one";
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 1);
    kill(first, SIGKILL);
    waitpid(first, nullptr, 0);
    for (const int end : ready) close(end);
    // A program that outlives the one that started it does not keep the next one from starting.
    const auto startAndEnd = [] {
        const int another = IsAnotherRunning();
        StartProgram("sleep 2", WindowStyle::NormalFocus);
        if (another == 0) EndProcess();
        return 1;
    };
    EXPECT_EQ(InAnotherProcess(startAndEnd), 0);
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 0);
}

TEST_F(ProcessTest, TheInstanceLockFollowsNoLink) {
    std::filesystem::create_symlink(drive_.HostPathOf("victim"), drive_.HostPathOf("BIN/klnupdt.lock"));
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 0);
    EXPECT_FALSE(drive_.Exists("victim"));
}

} // namespace
} // namespace korlan
