#include "transfer/Registration.h"

#include "app/base/Paths.h"
#include "app/base/TextHelpers.h"
#include "catalogue/FileKinds.h"
#include "catalogue/FileTables.h"
#include "platform/Component.h"
#include "platform/Log.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"

namespace korlan {
namespace {

// No file of the suite has a quote in its path; one that had could add words of its own to a command.
bool IsRegistered(const FileRecord& record) {
    return UpperCase(*record.LocalFolder) == UpperCase(GetAppFolder()) + "\\" && !Contains(record.LocalFile(), "\"");
}

bool IsComponentServer(const std::string& name) {
    const std::string upper = UpperCase(name);
    return upper == "KLNDIAGR.EXE" || upper == "KLNSPCVR.EXE";
}

void Start(const std::string& command) {
    try {
        StartProgram(command, WindowStyle::MinimizedFocus);
    } catch (const RuntimeError& error) { // a registration that fails does so unseen
        LogTrapped("RegisterFile", error);
    }
}

} // namespace

std::int32_t RegisterFile(std::int32_t recordIndex) {
    const FileRecord& record = Tables.FileArray[recordIndex];
    if (!IsRegistered(record)) return 0;
    const std::string extension = FileExtension(record.FileName), quotedPath = "\"" + record.LocalFile() + "\"";
    if (extension == "DLL" || extension == "OCX")
        Start("regsvr32 /s " + quotedPath);
    else if (extension == "EXE" && IsComponentServer(record.FileName))
        Start(quotedPath + " /RegServer");
    else if (extension == "TLB")
        RegisterTypeLibrary(record.LocalFile());
    return 0;
}

std::int32_t UnregisterFile(std::int32_t recordIndex) {
    const FileRecord& record = Tables.FileArray[recordIndex];
    if (!IsRegistered(record)) return 0;
    const std::string extension = FileExtension(record.FileName);
    if (extension == "DLL" || extension == "OCX" || extension == "EXE") // executables, too
        Start("regsvr32 /u /s \"" + record.LocalFile() + "\"");
    else if (extension == "TLB")
        UnregisterTypeLibrary(record.LocalFile());
    return 0;
}

std::int32_t RegisterTypeLibrary(const std::string& path) {
    LoadAndRegisterTypeLib(path); // one that cannot be loaded is not registered
    return 0;
}

std::int32_t UnregisterTypeLibrary(const std::string& path) {
    try {
        UnregisterTypeLib(DescribeTypeLib(path));
    } catch (const RuntimeError& error) { // nothing on the screen tells of it
        LogTrapped("UnregisterTypeLibrary", error);
    }
    return 0;
}

} // namespace korlan
