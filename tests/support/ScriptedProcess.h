// The program's own process and the programs it starts, scripted: stands in for the whole of platform/Process.h. List
// ScriptedProcess.cpp among a test's sources; its object then comes before the back end's.
#pragma once

#include "platform/Process.h"

#include <string>
#include <vector>

namespace korlan::test {

// What EndProcess throws here. No RuntimeError and no std::exception, so no trap of the program catches it.
struct ProcessEnded {};

struct StartedProgram {
    std::string commandLine;
    WindowStyle style = WindowStyle::NormalFocus;

    bool operator==(const StartedProgram&) const = default;
};

struct ScriptedProcess {
    std::string commandLine;                             // ProgramCommandLine answers this
    std::string programPath = "C:\\Korlan\\KlnUpdt.exe"; // ProgramPath answers this
    bool anotherInstance = false;                        // AnotherInstanceRunning answers this
    std::vector<std::string> missing;                    // starting exactly this command line raises 53
    std::vector<StartedProgram> started;                 // what was started, in order; a missing one is not among them
};

// The one process of the test program.
ScriptedProcess& Process();

// Back to an empty script; called by a fixture before every test.
void ResetProcess();

} // namespace korlan::test
