// What every fuzz target begins with: a fresh program in a small installation on a drive of its own, and the rule that
// a RuntimeError is the only way in which hostile bytes may be refused. Anything else that leaves ends the target.
#pragma once

#include "app/base/Settings.h"
#include "app/base/frmUpdate.h"
#include "catalogue/FileTables.h"
#include "platform/RuntimeError.h"
#include "platform/linux/HostPath.h"
#include "tests/support/ResetProgram.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/ScriptedProcess.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace korlan::test {

inline const TempDrive& Drive() {
    static const TempDrive& drive = *new TempDrive; // scripts/fuzz removes it
    return drive;
}

inline void StartFresh() {
    ResetProgram();
    ResetDesktop();
    ResetProcess();
    Process().programPath = "C:\\KORLAN\\KlnUpdt.EXE";
    Settings.IniFilePath = "C:\\KORLAN\\SYS\\TESSARY.INI";
    Settings.TempFolder = "C:\\KORLAN\\Temp";
    for (std::string* folder : {&Settings.JobDir, &Settings.LibDir, &Settings.SysDir, &Settings.KDScml,
                                &Settings.KDSudn, &Settings.KDSmod, &Settings.KDSsbk, &Settings.KDSwrk})
        *folder = "C:\\KORLAN\\LIB";
    for (const char* folder : {"KORLAN/LIB", "KORLAN/SYS", "KORLAN/Temp"}) Drive().MakeFolders(folder);
}

template <typename Call>
void MayBeRefused(Call call) {
    try {
        call();
    } catch (const RuntimeError&) {
    }
}

inline void Require(bool holds, const std::string& what) {
    if (holds) return;
    std::cerr << "broken promise: " << what << std::endl;
    std::abort();
}

// Whether the path leads to the installation's folder or to something in it.
inline bool IsInside(const std::string& windowsPath) {
    return (HostPath(windowsPath) + "/").starts_with(Drive().HostPathOf("KORLAN") + "/");
}

inline std::string_view Bytes(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// Cuts the first line off.
inline std::string TakeLine(std::string_view& bytes) {
    const std::string line(bytes.substr(0, bytes.find('\n')));
    bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
    return line;
}

} // namespace korlan::test
