#include "tests/support/ScriptedProcess.h"

#include "platform/RuntimeError.h"

#include <algorithm>

namespace korlan::test {

ScriptedProcess& Process() {
    static ScriptedProcess script;
    return script;
}

void ResetProcess() {
    Process() = ScriptedProcess{};
}

} // namespace korlan::test

namespace korlan {

using test::Process;

void EndProcess() {
    throw test::ProcessEnded{};
}

void SetProgramArguments(int argc, char** argv) {
    Process().commandLine.clear();
    for (int i = 1; i < argc; ++i) Process().commandLine += (i > 1 ? " " : "") + std::string(argv[i]);
}

std::string ProgramCommandLine() {
    return Process().commandLine;
}

std::string ProgramPath() {
    return Process().programPath;
}

bool AnotherInstanceRunning() {
    return Process().anotherInstance;
}

void StartProgram(const std::string& commandLine, WindowStyle style) {
    if (std::ranges::find(Process().missing, commandLine) != Process().missing.end())
        throw RuntimeError(kErrFileNotFound, commandLine);
    Process().started.push_back({commandLine, style});
}

} // namespace korlan
