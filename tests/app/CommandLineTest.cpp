#include "app/CommandLine.h"

#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "tests/app/AppFixture.h"

#include <filesystem>

namespace korlan::test {
namespace {

using CommandLine = AppTest;

TEST_F(CommandLine, FolderAndFileArguments) {
    drive.MakeFolders("Suite One\\Sys");
    drive.MakeFolders("Other");
    drive.Write("Jobs\\Board.txt", "x");
    drive.AddDrive('z', drive.HostPathOf("Jobs\\Board.txt"));
    const std::string ownFolder = "C:\\KORLAN\\sys";
    std::filesystem::current_path(drive.HostPathOf("Other"));
    const struct {
        const char* line;
        std::string sysPath, file;
        std::size_t warnings;
    } rows[] = {
        {"", ownFolder, "", 0},
        {"/sys:C:\\Suite One\\Sys", "C:\\SUITE ONE\\SYS", "", 0}, // blanks do not separate
        {"\"/SYS:  c:\\suite one\\sys \"", "C:\\SUITE ONE\\SYS", "", 0},
        {"/sys:C:/suite one/./x/../sys\\", "C:/SUITE ONE/./X/../SYS\\", "", 0},
        {"/sys:D:\\Sys", ownFolder, "", 1}, // no such drive
        {"/sys:a:", "A:", "", 0},           // a bare drive is not looked at
        {"/sys:Y:\\", "Y:\\", "", 0},       // from A to Y
        {"/sys:Z:\\", ownFolder, "", 1},
        {"/sys:@:", ownFolder, "", 1},
        {"/sys:Q;", ownFolder, "", 1},
        {"/sys:Q:x", ownFolder, "", 1},
        {"/sys:C:\\Jobs\\Board.txt", ownFolder, "", 1},
        {"C:\\Jobs\\board.TXT", ownFolder, "C:\\Jobs\\board.TXT", 0},
        {"C:\\Jobs\\*.txt", ownFolder, "", 0},
        {"\"C:\\Jobs\\Missing.txt\" \"/sys:C:\\Other\"", "C:\\OTHER", "", 0},
        {"\"/sys:C:\\Other\"\"C:\\Jobs\\Board.txt\"", "C:\\OTHER", "C:\\Jobs\\Board.txt", 0},
        {"\"/sys:C:\\Other\" \"/sys:C:\\Suite One\"", "C:\\SUITE ONE", "", 0}, // the later one wins
        {"\"/sys:C:\\Other\" \"/sys:C:\\Nowhere\"", "C:\\OTHER", "", 1},
        {"\"/sys:C:\\Other\" \"a\" \"b\"", ownFolder, "", 0}, // three: nothing is taken
    };
    for (const auto& row : rows) {
        Desktop().boxes.clear();
        Process().commandLine = row.line;
        const auto before = std::filesystem::current_path();
        ParseCommandLine();
        EXPECT_EQ(Settings.SysPath, row.sysPath) << row.line;
        EXPECT_EQ(Settings.CommandFile, row.file) << row.line;
        EXPECT_EQ(Desktop().boxes.size(), row.warnings) << row.line;
        EXPECT_EQ(std::filesystem::current_path(), before) << row.line;
    }
}

TEST_F(CommandLine, AFolderIsTriedFromAPlaceWithoutAName) {
    drive.MakeFolders("Gone");
    std::filesystem::current_path(drive.HostPathOf("Gone"));
    std::filesystem::remove(drive.HostPathOf("Gone"));
    Process().commandLine = "/sys:C:\\KORLAN";
    ParseCommandLine();
    EXPECT_EQ(Settings.SysPath, "C:\\KORLAN");
    EXPECT_THROW(std::filesystem::current_path(), std::exception) << "the program is still where it was";
}

TEST_F(CommandLine, TheWarningNamesFolderAndReason) {
    std::string path = "c:\\nowhere";
    std::int32_t failed = 0;
    CheckFolderPath(path, failed);
    EXPECT_EQ(failed, 1);
    EXPECT_EQ(path, "C:\\NOWHERE");
    ASSERT_EQ(BoxTexts().size(), 1U);
    EXPECT_TRUE(BoxTexts()[0].starts_with("Path: C:\\NOWHERE not available\n")) << BoxTexts()[0];
    EXPECT_EQ(Desktop().boxes[0].style, kBoxExclamation + kBoxSystemModal);
}

} // namespace
} // namespace korlan::test
