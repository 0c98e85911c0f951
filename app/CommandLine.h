// The program's command line: "/sys:" and the folder of the suite INI file, and the name of an existing file.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Sets Settings.SysPath (program folder + "\sys" unless the command line names another that is there) and
// Settings.CommandFile. A folder that cannot be entered shows a warning.
void ParseCommandLine();

// Upper-cases the path in place. failed = 0 when the folder can be entered or is a bare drive; otherwise a warning is
// shown and failed = 1. The current folder is what it was before.
void CheckFolderPath(std::string& path, std::int32_t& failed);

} // namespace korlan
