// The program's own process and other programs.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Ends the process at once, without unwinding. (A test's own version throws a type that no trap catches.)
[[noreturn]] void EndProcess();

// The text behind the program's name, as the user or the suite gave it; quotes included.
void SetProgramArguments(int argc, char** argv); // called once by main
std::string ProgramCommandLine();

// Full Windows-form path of the running executable.
std::string ProgramPath();

// True when another copy of this program is already running for this user. The first call makes this copy known.
bool AnotherInstanceRunning();

enum class WindowStyle : std::int32_t { NormalFocus = 1, MinimizedFocus = 2 };

// Starts a program and returns without waiting for it. The command line is a path or a bare name, then the arguments as
// they stand. Unquoted, a path with blanks ends at the first blank that leaves the name of a file. A program that is
// not there raises 53, one that cannot be executed 5. A back end without component registration drops the commands of
// regsvr32 silently.
void StartProgram(const std::string& commandLine, WindowStyle style);

} // namespace korlan
