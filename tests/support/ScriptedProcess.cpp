#include "tests/support/ScriptedProcess.h"

#include "platform/RuntimeError.h"

#include <algorithm>

namespace korlan {
namespace {

ProcessScript script;

} // namespace

ProcessScript& TheProcess() {
    return script;
}
void ResetProcessScript() {
    script = ProcessScript{};
}

void EndProcess() {
    throw ProcessEnded{};
}

void SetProgramArguments(int argc, char** argv) {
    script.commandLine.clear();
    for (int i = 1; i < argc; ++i) script.commandLine += (i > 1 ? " " : "") + std::string(argv[i]);
}

std::string ProgramCommandLine() {
    return script.commandLine;
}
std::string ProgramPath() {
    return script.programPath;
}
bool AnotherInstanceRunning() {
    return script.anotherInstance;
}

void StartProgram(const std::string& commandLine, WindowStyle style) {
    if (std::ranges::find(script.missing, commandLine) != script.missing.end())
        throw RuntimeError(kErrFileNotFound, commandLine);
    script.started.push_back({commandLine, style});
}

} // namespace korlan
