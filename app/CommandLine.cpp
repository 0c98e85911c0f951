#include "app/CommandLine.h"

#include "app/base/LocalText.h"
#include "app/base/Paths.h"
#include "app/base/Settings.h"
#include "app/base/TextHelpers.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"

#include <vector>

namespace korlan {

namespace {

constexpr const char* kFolderPrefix = "/sys:";
constexpr std::size_t kMostArguments = 2;

// Only the quotes separate: /sys:C:\A B is one argument.
std::vector<std::string> SplitArguments(const std::string& commandLine) {
    std::vector<std::string> arguments;
    for (const std::string& piece : Split(Trim(commandLine), "\"")) {
        if (const std::string argument = Trim(piece); !argument.empty()) arguments.push_back(argument);
    }
    return arguments;
}

void TakeFolder(std::string folder) {
    std::int32_t failed = 0;
    CheckFolderPath(folder, failed);
    if (failed == 0) Settings.SysPath = folder;
}

// A pattern finds a name that it does not end with, so only a plain name is taken.
void TakeFile(const std::string& argument) {
    const std::string found = FindNormalFile(argument);
    if (!found.empty() && LowerCase(argument).ends_with(LowerCase(found))) Settings.CommandFile = argument;
}

// The letters end at Y: drive Z is tried as a folder, and one that is away gets its warning.
bool IsBareDrive(const std::string& path) {
    return (path.size() == 2 || (path.size() == 3 && path[2] == '\\')) && path[1] == ':' && path[0] > 64 &&
           path[0] < 90;
}

} // namespace

void ParseCommandLine() {
    Settings.SysPath = GetAppFolder() + "\\sys";
    Settings.CommandFile.clear();
    const std::vector<std::string> arguments = SplitArguments(ProgramCommandLine());
    if (arguments.size() > kMostArguments) return; // even a valid one among them is not taken
    for (const std::string& argument : arguments) {
        if (LowerCase(Left(argument, 5)) == kFolderPrefix) {
            TakeFolder(Trim(Mid(argument, 6)));
        } else {
            TakeFile(argument);
        }
    }
}

void CheckFolderPath(std::string& path, std::int32_t& failed) {
    path = UpperCase(path);
    failed = 0;
    if (IsBareDrive(path)) return;
    try {
        TryFolder(path);
    } catch (const RuntimeError& error) {
        failed = 1;
        ShowMsgBox(GetLocalText("Path: ", "991019") + path + GetLocalText(" not available", "99961") + "\n" +
                       error.Description(),
                   kBoxExclamation + kBoxSystemModal, GetSysName());
    }
}

} // namespace korlan
