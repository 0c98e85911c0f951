// The decisions of registration as command lines.
#include "transfer/Registration.h"

#include "catalogue/FileTables.h"
#include "platform/Component.h"
#include "platform/RuntimeError.h"
#include "tests/support/ScriptedProcess.h"

#include <gtest/gtest.h>

namespace korlan {

using test::Process;

// Type libraries as another program would be asked for them. One of the name "BAD.TLB" cannot be described.
bool LoadAndRegisterTypeLib(const std::string& path) {
    Process().started.push_back({"load " + path, WindowStyle::MinimizedFocus});
    return false;
}
TypeLibraryInfo DescribeTypeLib(const std::string& path) {
    if (path.ends_with("BAD.TLB")) throw RuntimeError(kErrFileNotFound);
    return {.identifier = path};
}
bool UnregisterTypeLib(const TypeLibraryInfo& library) {
    Process().started.push_back({"forget " + library.identifier, WindowStyle::MinimizedFocus});
    return false;
}

namespace {

using Operation = std::int32_t (*)(std::int32_t);

// The one command that an operation starts on a record, "" when it starts none.
std::string CommandOf(Operation operation, const std::string& name, const std::string& folder) {
    test::ResetProcess();
    Process().missing = {R"("C:\Korlan\KLNSPCVR.EXE" /RegServer)"}; // does not start, which passes unseen
    FileRecord& record = Tables.FileArray.Append({});
    record.FileName = name;
    record.LocalFolder = folder;
    EXPECT_EQ(operation(Tables.FileArray.UpperBound()), 0);
    if (Process().started.empty()) return {};
    EXPECT_EQ(Process().started.size(), 1u);
    EXPECT_EQ(Process().started[0].style, WindowStyle::MinimizedFocus);
    return Process().started[0].commandLine;
}

TEST(Registration, ExtensionAndFolderDecide) {
    const std::string own = "C:\\Korlan\\", spelled = "c:\\KORLAN\\";
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"a.ocx", own, R"(regsvr32 /s "C:\Korlan\a.ocx")", R"(regsvr32 /u /s "C:\Korlan\a.ocx")"},
        {"My Part.dll", spelled, R"(regsvr32 /s "c:\KORLAN\My Part.dll")", R"(regsvr32 /u /s "c:\KORLAN\My Part.dll")"},
        {"KlnDiagR.exe", own, R"("C:\Korlan\KlnDiagR.exe" /RegServer)", R"(regsvr32 /u /s "C:\Korlan\KlnDiagR.exe")"},
        {"klnspcvr.EXE", own, R"("C:\Korlan\klnspcvr.EXE" /RegServer)", R"(regsvr32 /u /s "C:\Korlan\klnspcvr.EXE")"},
        {"KLNSPCVR.EXE", own, "", R"(regsvr32 /u /s "C:\Korlan\KLNSPCVR.EXE")"},
        {"OTHER.EXE", own, "", R"(regsvr32 /u /s "C:\Korlan\OTHER.EXE")"},
        {"DLL", own, R"(regsvr32 /s "C:\Korlan\DLL")", R"(regsvr32 /u /s "C:\Korlan\DLL")"},
        {"A.B.DLL", own, "", ""},
        {"A.TXT", own, "", ""},
        {"", own, "", ""},
        {"A.DLL", "C:\\Korlan", "", ""},
        {"A.DLL", "C:\\Korlan\\SYS\\", "", ""},
        {"A\" /i \".DLL", own, "", ""},
        {"A.tlb", own, R"(load C:\Korlan\A.tlb)", R"(forget C:\Korlan\A.tlb)"},
        {"BAD.TLB", own, R"(load C:\Korlan\BAD.TLB)", ""}, // which fails unseen
    };
    for (const auto& [name, folder, whenRegistered, whenUnregistered] : cases) {
        EXPECT_EQ(CommandOf(RegisterFile, name, folder), whenRegistered) << folder << name;
        EXPECT_EQ(CommandOf(UnregisterFile, name, folder), whenUnregistered) << folder << name;
    }
    EXPECT_THROW(RegisterFile(99), RuntimeError) << "no such record";
}

} // namespace
} // namespace korlan
