// Programs really started: stand-ins that write down what they were given.
#include "platform/Process.h"

#include "platform/RuntimeError.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <chrono>
#include <thread>

namespace korlan {
namespace {

using test::ScopedVariable;
using test::TempDrive;
using testing::ElementsAre;
using testing::EndsWith;
using Words = std::vector<std::string>;

class ProcessTest : public testing::Test {
protected:
    ProcessTest() : path_("PATH", drive_.HostPathOf("BIN") + ":/usr/bin:/bin") { drive_.MakeFolders("BIN"); }

    // A program that writes its arguments, each in brackets, and facts about itself.
    void MakeProgram(const std::string& path) const {
        drive_.Write(path, "#!/bin/sh\n{ printf '[%s]' \"$@\"; printf '\\n%s\\n%s\\n%s\\n' \"$0\" \"$(pwd)\" "
                           "\"$(readlink /proc/$$/fd/0)\"; ls /proc/$$/fd | tr '\\n' ' '; } > " +
                               Report() + ".part\nmv " + Report() + ".part " + Report() + "\n");
        drive_.SetMode(path, 0755);
    }
    void MakeWindowsProgram(const std::string& path) const { drive_.Write(path, "MZ stands for a Windows program"); }
    std::string Report() const { return drive_.HostPathOf("report"); }

    // The lines of the report: arguments, program, folder, standard input, open files. Empty when none comes.
    Words Started(const std::string& commandLine, int patience = 5000) {
        std::filesystem::remove(Report());
        StartProgram(commandLine, WindowStyle::MinimizedFocus);
        for (int waited = 0; waited < patience && !drive_.Exists("report"); waited += 5)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (!drive_.Exists("report")) return {};
        Words lines;
        std::istringstream report(drive_.Read("report"));
        for (std::string line; std::getline(report, line);) lines.push_back(line);
        return lines;
    }

    TempDrive drive_;
    ScopedVariable path_;
};

std::int32_t ErrorOf(const std::string& commandLine) {
    try {
        StartProgram(commandLine, WindowStyle::NormalFocus);
    } catch (const RuntimeError& error) {
        return error.Number();
    }
    return 0;
}

TEST_F(ProcessTest, FindsTheProgramAndSplitsItsArguments) {
    for (const char* path : {"KORLAN/TOOL.EXE", "Two Words/More Tools/RUN.EXE", "Two/plain", "BIN/bare"})
        MakeProgram(path);
    const struct {
        const char *commandLine, *program, *arguments;
    } cases[] = {
        {"C:\\KORLAN\\TOOL.EXE", "KORLAN/TOOL.EXE", "[]"},
        {"c:\\korlan\\tool.exe a b", "KORLAN/TOOL.EXE", "[a][b]"},
        {"C:\\KORLAN\\TOOL a", "KORLAN/TOOL.EXE", "[a]"},
        {"  \"C:\\KORLAN\\TOOL.EXE\"  a  ", "KORLAN/TOOL.EXE", "[a]"},
        {"\"C:\\Two Words\\More Tools\\RUN\" /x", "Two Words/More Tools/RUN.EXE", "[/x]"},
        {"C:\\Two Words\\More Tools\\RUN.EXE one two", "Two Words/More Tools/RUN.EXE", "[one][two]"},
        {"C:\\Two Words\\More Tools\\RUN", "Two Words/More Tools/RUN.EXE", "[]"},
        {"C:\\Two\\plain C:\\Two Words", "Two/plain", "[C:\\Two][Words]"},
        {"bare \"C:\\A B\\C.DLL\" \"\"", "BIN/bare", "[C:\\A B\\C.DLL][]"},
        {"bare a\\\\b \"c\\\\\" d\\\"e \"f\\\\\\\"g\" h\"i j\"k", "BIN/bare", "[a\\\\b][c\\][d\"e][f\\\"g][hi jk]"},
        {"bare \"a\"\"b\" \"c d", "BIN/bare", "[a\"b][c d]"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.commandLine);
        const Words lines = Started(row.commandLine);
        ASSERT_EQ(lines.size(), 5u);
        EXPECT_EQ(lines[0], row.arguments);
        EXPECT_EQ(lines[1], drive_.HostPathOf(row.program));
    }
}

TEST_F(ProcessTest, AProgramRunsOnItsOwn) {
    MakeProgram("BIN/bare");
    std::filesystem::current_path(drive_.HostPathOf("BIN"));
    const int leak = fcntl(STDERR_FILENO, F_DUPFD, 77); // without close-on-exec; above the shell's own
    const Words lines = Started("bare");
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[2], drive_.HostPathOf("BIN"));
    EXPECT_EQ(lines[3], "/dev/null");
    EXPECT_EQ((" " + lines[4]).find(" " + std::to_string(leak) + " "), std::string::npos) << lines[4];
    close(leak);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);

    drive_.Write("BIN/slow", "#!/bin/sh\nexec sleep 2\n");
    drive_.SetMode("BIN/slow", 0755);
    const auto before = std::chrono::steady_clock::now();
    StartProgram("slow", WindowStyle::NormalFocus);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(1)) << "it was waited for";
}

TEST_F(ProcessTest, WhatCannotBeStartedIsAnError) {
    drive_.Write("DATA.EXE", "no program");
    drive_.Write("BROKEN.EXE", "no program either");
    drive_.SetMode("BROKEN.EXE", 0755);
    drive_.Write("ORPHAN", "#!/no/such/interpreter\n");
    drive_.SetMode("ORPHAN", 0755);
    drive_.MakeFolders("FOLDER.EXE");
    const struct {
        const char* commandLine;
        std::int32_t error;
    } cases[] = {
        {"C:\\MISSING.EXE", 53},
        {"missing-program", 53},
        {"", 53},
        {"\"\" a", 53},
        {"Q:\\X.EXE", 53},
        {"C:\\FOLDER.EXE", 53},
        {"C:\\DATA.EXE", 5},
        {"C:\\BROKEN.EXE", 5},
        {"C:\\ORPHAN", 53},
        {"\"C:\\MISSING.EXE\" /RegServer", 53},
    };
    for (const auto& row : cases) EXPECT_EQ(ErrorOf(row.commandLine), row.error) << row.commandLine;
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST_F(ProcessTest, RegistrationIsStartedWhereItCanBe) {
    const char* const command = "regsvr32 /s \"C:\\KORLAN\\My Parts.DLL\"";
    MakeWindowsProgram("KORLAN/KLNDIAGR.EXE");
    MakeWindowsProgram("KORLAN/TOOL.EXE");
    {
        const ScopedVariable path("PATH", drive_.HostPathOf("BIN"));
        EXPECT_EQ(ErrorOf(command), 0) << "dropped";
        EXPECT_EQ(ErrorOf("\"C:\\KORLAN\\KLNDIAGR.EXE\" /RegServer"), 0) << "dropped";
        EXPECT_EQ(ErrorOf("C:\\KORLAN\\TOOL.EXE"), 53);
    }
    MakeProgram("BIN/regsvr32");
    MakeProgram("BIN/wine");
    const Words lines = Started(command);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "[/s][C:\\KORLAN\\My Parts.DLL]");
    EXPECT_EQ(lines[1], drive_.HostPathOf("BIN/regsvr32"));

    const std::string tool = drive_.HostPathOf("KORLAN/TOOL.EXE");
    EXPECT_EQ(Started("C:\\KORLAN\\TOOL.EXE x").at(0), "[" + tool + "][x]") << "through Wine";
    EXPECT_EQ(Started("\"C:\\KORLAN\\KLNDIAGR.EXE\" /RegServer").at(0),
              "[" + drive_.HostPathOf("KORLAN/KLNDIAGR.EXE") + "][/RegServer]");
}

TEST_F(ProcessTest, TheCommandLineKeepsArgumentsApart) {
    const struct {
        std::vector<const char*> argv;
        const char* line;
    } cases[] = {
        {{"klnupdt"}, ""},
        {{"klnupdt", "C:\\My Jobs\\A.JOB"}, "\"C:\\My Jobs\\A.JOB\""},
        {{"klnupdt", "a", "", "b c"}, "\"a\" \"\" \"b c\""},
        {{"klnupdt", "\"C:\\A B\" x", "y"}, "\"C:\\A B\" x \"y\""},
    };
    for (const auto& row : cases) {
        auto argv = row.argv;
        SetProgramArguments(static_cast<int>(argv.size()), const_cast<char**>(argv.data()));
        EXPECT_EQ(ProgramCommandLine(), row.line);
    }
    EXPECT_THAT(ProgramPath(), EndsWith("\\ProcessTest"));
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
    const ScopedVariable runtime("XDG_RUNTIME_DIR", drive_.HostPathOf("BIN"));
    int ready[2], done[2];
    ASSERT_TRUE(pipe(ready) == 0 && pipe(done) == 0);
    const pid_t first = fork();
    if (first == 0) {
        close(done[1]);
        const char answers = static_cast<char>(IsAnotherRunning() + 2 * IsAnotherRunning());
        char end = 0;
        _exit(write(ready[1], &answers, 1) == 1 && read(done[0], &end, 1) == 0 ? 0 : 1);
    }
    char answers = 0;
    ASSERT_EQ(read(ready[0], &answers, 1), 1);
    EXPECT_EQ(answers, 0) << "it took itself for another one";
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 1);
    for (const int end : {ready[0], ready[1], done[0], done[1]}) close(end);
    waitpid(first, nullptr, 0);
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 0) << "the first one has ended";
}

TEST_F(ProcessTest, TheInstanceLockFollowsNoLink) {
    const ScopedVariable runtime("XDG_RUNTIME_DIR", drive_.HostPathOf("BIN"));
    std::filesystem::create_symlink(drive_.HostPathOf("victim"), drive_.HostPathOf("BIN/klnupdt.lock"));
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 0);
    EXPECT_FALSE(drive_.Exists("victim"));
}

// A program that outlives this one must not keep the next one from starting.
TEST_F(ProcessTest, AStartedProgramDoesNotHoldTheInstance) {
    const ScopedVariable runtime("XDG_RUNTIME_DIR", drive_.HostPathOf("BIN"));
    drive_.Write("BIN/slow", "#!/bin/sh\nexec sleep 2\n");
    drive_.SetMode("BIN/slow", 0755);
    EXPECT_EQ(InAnotherProcess([] {
                  AnotherInstanceRunning();
                  StartProgram("slow", WindowStyle::NormalFocus);
                  EndProcess();
                  return 1;
              }),
              0);
    EXPECT_EQ(InAnotherProcess(IsAnotherRunning), 0);
}

} // namespace
} // namespace korlan
