// The decisions of registration as command lines and calls for type libraries.
#include "transfer/Registration.h"

#include "catalogue/FileTables.h"
#include "platform/Component.h"
#include "platform/RuntimeError.h"
#include "tests/support/ScriptedProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

// --- Type libraries, scripted ----------------------------------------------------------------------------------------

std::vector<std::string> typeLibraryCalls;
bool typeLibraryFails = false;

} // namespace

bool LoadAndRegisterTypeLib(const std::string& path) {
    typeLibraryCalls.push_back("register " + path);
    return !typeLibraryFails;
}

TypeLibraryInfo DescribeTypeLib(const std::string& path) {
    typeLibraryCalls.push_back("describe " + path);
    if (typeLibraryFails) throw RuntimeError(kErrFileNotFound);
    return {"{" + path + "}", 1, 2, 3};
}

bool UnregisterTypeLib(const TypeLibraryInfo& library) {
    typeLibraryCalls.push_back("unregister " + library.identifier);
    return true;
}

namespace {

using test::Process;
using testing::ElementsAre;

class RegistrationTest : public testing::Test {
protected:
    RegistrationTest() {
        test::ResetProcess();
        Process().programPath = "C:\\Korlan\\KlnUpdt.exe";
        Tables.FileArray.Clear();
        typeLibraryCalls.clear();
        typeLibraryFails = false;
    }

    // The one command that an operation starts on a record, "" when it starts none.
    static std::string CommandOf(std::int32_t (*operation)(std::int32_t), const std::string& name,
                                 const std::string& folder) {
        FileRecord record;
        record.FileName = name;
        record.LocalFile = folder + name;
        record.LocalFolder = folder;
        Tables.FileArray.Append(record);
        Process().started.clear();
        EXPECT_EQ(operation(Tables.FileArray.UpperBound()), 0);
        if (Process().started.empty()) return {};
        EXPECT_EQ(Process().started.size(), 1u);
        EXPECT_EQ(Process().started[0].style, WindowStyle::MinimizedFocus);
        return Process().started[0].commandLine;
    }
};

TEST_F(RegistrationTest, ExtensionAndFolderDecide) {
    const std::string own = "C:\\Korlan\\", spelled = "c:\\KORLAN\\";
    const struct {
        std::string name, folder, whenRegistered, whenUnregistered;
    } cases[] = {
        {"A.DLL", own, R"(regsvr32 /s "C:\Korlan\A.DLL")", R"(regsvr32 /u /s "C:\Korlan\A.DLL")"},
        {"a.ocx", own, R"(regsvr32 /s "C:\Korlan\a.ocx")", R"(regsvr32 /u /s "C:\Korlan\a.ocx")"},
        {"My Part.dll", spelled, R"(regsvr32 /s "c:\KORLAN\My Part.dll")", R"(regsvr32 /u /s "c:\KORLAN\My Part.dll")"},
        {"KlnDiagR.exe", own, R"("C:\Korlan\KlnDiagR.exe" /RegServer)", R"(regsvr32 /u /s "C:\Korlan\KlnDiagR.exe")"},
        {"KLNSPCVR.EXE", own, R"("C:\Korlan\KLNSPCVR.EXE" /RegServer)", R"(regsvr32 /u /s "C:\Korlan\KLNSPCVR.EXE")"},
        {"OTHER.EXE", own, "", R"(regsvr32 /u /s "C:\Korlan\OTHER.EXE")"},
        {"DLL", own, R"(regsvr32 /s "C:\Korlan\DLL")", R"(regsvr32 /u /s "C:\Korlan\DLL")"},
        {".dll", own, R"(regsvr32 /s "C:\Korlan\.dll")", R"(regsvr32 /u /s "C:\Korlan\.dll")"},
        {"A.B.DLL", own, "", ""},
        {"A.TXT", own, "", ""},
        {"README", own, "", ""},
        {"", own, "", ""},
        {"A.DLL", "C:\\Korlan", "", ""},
        {"A.DLL", "C:\\Korlan\\SYS\\", "", ""},
        {"A.DLL", "C:\\", "", ""},
        {"A\" /i \".DLL", own, "", ""},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.folder + " " + row.name);
        EXPECT_EQ(CommandOf(RegisterFile, row.name, row.folder), row.whenRegistered);
        EXPECT_EQ(CommandOf(UnregisterFile, row.name, row.folder), row.whenUnregistered);
    }
    EXPECT_TRUE(typeLibraryCalls.empty());
}

TEST_F(RegistrationTest, TypeLibrariesGoToTheirOwnCalls) {
    EXPECT_EQ(CommandOf(RegisterFile, "A.tlb", "C:\\Korlan\\"), "");
    EXPECT_EQ(CommandOf(UnregisterFile, "A.tlb", "C:\\Korlan\\"), "");
    EXPECT_EQ(CommandOf(RegisterFile, "A.tlb", "C:\\Else\\"), "");
    EXPECT_THAT(typeLibraryCalls, ElementsAre("register C:\\Korlan\\A.tlb", "describe C:\\Korlan\\A.tlb",
                                              "unregister {C:\\Korlan\\A.tlb}"));
    typeLibraryCalls.clear();
    typeLibraryFails = true;
    EXPECT_EQ(RegisterTypeLibrary("C:\\X.TLB"), 0);
    EXPECT_EQ(UnregisterTypeLibrary("C:\\X.TLB"), 0) << "ends silently";
    EXPECT_THAT(typeLibraryCalls, ElementsAre("register C:\\X.TLB", "describe C:\\X.TLB"));
}

TEST_F(RegistrationTest, AProgramThatIsMissingPassesUnseen) {
    Process().missing = {R"("C:\Korlan\KLNDIAGR.EXE" /RegServer)"};
    EXPECT_EQ(CommandOf(RegisterFile, "KLNDIAGR.EXE", "C:\\Korlan\\"), "");
    EXPECT_THROW(RegisterFile(99), RuntimeError) << "no such record";
}

} // namespace
} // namespace korlan
