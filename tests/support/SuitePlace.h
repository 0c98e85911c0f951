// A suite's library as the program finds it: in the program's own folder.
#pragma once

#include "sdk/KlwUpdt.h"
#include "tests/support/ScriptedProcess.h"
#include "tests/support/TempFolder.h"

namespace korlan::test {

// On Windows, where a library in use cannot be taken away again, the program goes to the library.
inline void UseSuite([[maybe_unused]] const TempDrive& drive, const std::string& library) {
#ifdef _WIN32
    const std::filesystem::path folder = std::filesystem::absolute(library).make_preferred().parent_path();
    Process().programPath = TextOfPath(folder / "KlnUpdt.EXE");
#else
    const std::string& program = Process().programPath;
    const std::string place = program.substr(0, program.find_last_of('\\') + 1) + KLN_SUITE_LIBRARY;
    std::filesystem::remove(drive.HostPathOf(place));
    std::filesystem::create_symlink(library, drive.HostPathOf(place));
#endif
}

} // namespace korlan::test
