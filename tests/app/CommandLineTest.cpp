#include "app/CommandLine.h"

#include "platform/FileSystem.h"
#include "tests/app/AppFixture.h"

namespace korlan::test {
namespace {

using CommandLine = AppTest;

TEST_F(CommandLine, FolderAndFileArguments) {
    drive.MakeFolders("Suite One\\Sys");
    drive.MakeFolders("Other");
    drive.Write("Jobs\\Board.txt", "x");
    drive.AddDrive('z', drive.HostPathOf("Jobs\\Board.txt")); // no folder
    const std::string ownFolder = "C:\\KORLAN\\sys";
    ChangeCurrentFolder("C:\\Other");
    const struct {
        const char* line;
        std::string sysPath, file;
        std::size_t warnings;
    } rows[] = {{"   ", ownFolder, "", 0},
                {"\"\" \" \"", ownFolder, "", 0},
                {"/sys:C:\\Suite One\\Sys", "C:\\SUITE ONE\\SYS", "", 0}, // blanks do not separate
                {"\"/SYS:  c:\\suite one\\sys \"", "C:\\SUITE ONE\\SYS", "", 0},
                {"/sys:q:", "Q:", "", 0}, // a bare drive is not looked at
                {"/sys:Y:\\", "Y:\\", "", 0},
                {"/sys:z:", ownFolder, "", 1}, // Z is
                {"/sys:1:", ownFolder, "", 1},
                {"/sys:C:\\Jobs\\Board.txt", ownFolder, "", 1},
                {"/sys:", ownFolder, "", 1},
                {"C:\\Jobs\\board.TXT", ownFolder, "C:\\Jobs\\board.TXT", 0},
                {"C:\\Jobs\\*.txt", ownFolder, "", 0},
                {"C:\\Jobs", ownFolder, "", 0},
                {"\"C:\\Jobs\\Missing.txt\" \"/sys:C:\\Other\"", "C:\\OTHER", "", 0},
                {"\"/sys:C:\\Other\"\"C:\\Jobs\\Board.txt\"", "C:\\OTHER", "C:\\Jobs\\Board.txt", 0},
                {"\"/sys:C:\\Other\" \"/sys:C:\\Suite One\"", "C:\\SUITE ONE", "", 0}, // the later one wins
                {"\"/sys:C:\\Other\" \"/sys:C:\\Nowhere\"", "C:\\OTHER", "", 1},
                {"\"/sys:C:\\Other\" \"a\" \"b\"", ownFolder, "", 0}}; // three: nothing is taken
    for (const auto& row : rows) {
        Desktop().boxes.clear();
        Process().commandLine = row.line;
        const std::string before = CurrentFolder();
        ParseCommandLine();
        EXPECT_EQ(Suite.SysPath, row.sysPath) << row.line;
        EXPECT_EQ(Suite.CommandFile, row.file) << row.line;
        EXPECT_EQ(Desktop().boxes.size(), row.warnings) << row.line;
        EXPECT_EQ(CurrentFolder(), before) << row.line;
    }

    std::string path = "c:\\nowhere";
    std::int32_t failed = 0;
    CheckFolderPath(path, failed);
    EXPECT_EQ(path + std::to_string(failed), "C:\\NOWHERE1");
    const std::string text = BoxTexts().at(0); // folder and reason
    EXPECT_TRUE(text.starts_with("Path: C:\\NOWHERE not available\n") && text.size() > 31) << text;
    EXPECT_EQ(Desktop().boxes[0].style, kBoxExclamation + kBoxSystemModal);
}

} // namespace
} // namespace korlan::test
