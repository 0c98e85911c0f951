#include "platform/linux/HostPath.h"

#include "platform/FileSystem.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <functional>

namespace korlan {
namespace {

using test::ErrorOf;
using test::ScopedVariable;
using test::TempDrive;

// Paths against a tree with SYS\MiXed.Txt, Größe\Éa.txt, both\a.txt, both\A.TXT; "<C>" is the drive's host folder.
TEST(HostPath, FindsFilesWhateverTheCaseOfTheirLetters) {
    const TempDrive drive;
    for (const char* file : {"SYS/MiXed.Txt", "Größe/Éa.txt", "both/a.txt", "both/A.TXT"}) drive.Write(file, "x");
    std::filesystem::create_symlink("nowhere", drive.HostPathOf("SYS/Dangling"));
    std::filesystem::current_path(drive.HostPathOf("both"));

    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {"<C>/SYS/MiXed.Txt",
         {"C:\\SYS\\MiXed.Txt", "c:\\sys/\\mixed.txt\\", "C:\\sys\\.\\..\\sys\\mixed.txt . ", "..\\sys\\MIXED.txt",
          "C:\\sys.\\mixed.txt"}},
        {"<C>/sys../mixed.txt", {"C:\\sys..\\mixed.txt"}},
        {"<C>/SYS/MiXed.Txt/below", {"C:\\sys\\mixed.txt\\below"}},
        {"<C>/SYS/Missing/mixed.txt", {"C:\\sys\\Missing\\mixed.txt"}},
        {"<C>/SYS/New File.txt", {"C:\\sys\\New File.txt"}},
        {"<C>/SYS/Dangling", {"C:\\sys\\DANGLING"}},
        {"<C>/SYS", {"\\sys", "C:\\no\\..\\..\\..\\sys"}}, // in the text: the folder need not be there
        {"<C>/GRÖSSE/éA.TXT", {"C:\\GRÖSSE\\éA.TXT"}},     // the sharp s has no capital of its own
        {"<C>/Größe/Éa.txt", {"C:\\GRÖßE\\éA.TXT"}},
        {"<C>/both/a.txt", {"C:\\both\\a.txt"}},
        {"<C>/both/A.TXT", {"C:A.TXT", "A.TXT", "C:\\both\\A.txt"}}, // neither is exact: first in byte order
        {"<C>/both", {"C:", ".", ""}},
        {"<C>", {"C:\\"}},
        {"/tmp", {"Z:\\TMP"}},
        {"/", {"z:\\"}},
    };
    for (auto [expected, paths] : rows) {
        if (expected.starts_with("<C>")) expected.replace(0, 3, (drive.Top() / "c").string());
        for (const std::string& path : paths) EXPECT_EQ(HostPath(path), expected) << path;
    }
}

TEST(HostPath, RefusesWhatNamesNoFile) {
    const TempDrive drive;
    std::filesystem::create_symlink("/nowhere/at/all", drive.Top() / "drives" / "e:");
    using namespace std::literals;
    for (const std::string& path : {"C:\\a\0b"s, "D:\\x"s, "E:\\x"s, "\\\\server\\share\\x"s})
        EXPECT_EQ(ErrorOf([&] { HostPath(path); }), kErrPathNotFound) << path;
    EXPECT_FALSE(DriveIsThere("D:\\x") || DriveIsThere("E:\\x"));
    EXPECT_TRUE(DriveIsThere("c:\\x") && DriveIsThere("x") && DriveIsThere("Z:"));
}

TEST(HostPath, NamesAreThoseOfTheMomentWhoeverChangesThem) {
    const TempDrive drive;
    namespace fs = std::filesystem;
    const fs::path folder = drive.HostPathOf("D"), other = drive.HostPathOf("E");
    drive.MakeFolders("D");
    drive.Write("E/FRESH", "");
    drive.Write("E/Later", "");
    const auto found = [&] { return fs::path(HostPath("C:\\D\\name")).filename().string(); };
    const std::tuple<const char*, std::function<void()>, std::string> steps[] = {
        {"read for the first time", [] {}, "name"},
        {"made", [&] { drive.Write("D/Name", ""); }, "Name"},
        {"one more, before it", [&] { drive.Write("D/NAME", ""); }, "NAME"},
        {"erased", [&] { fs::remove(folder / "NAME"); }, "Name"},
        {"renamed", [&] { fs::rename(folder / "Name", folder / "nAme"); }, "nAme"},
        {"moved away", [&] { fs::rename(folder / "nAme", other / "nAme"); }, "name"},
        {"moved here", [&] { fs::rename(other / "nAme", folder / "naMe"); }, "naMe"},
        {"more changes than are told",
         [&] {
             for (int i = 0; i < 9000; ++i) fs::remove((drive.Write("D/x", ""), folder / "x"));
             fs::rename(folder / "naMe", folder / "namE");
         },
         "namE"},
        {"another folder of that name",
         [&] {
             fs::rename(folder, drive.HostPathOf("OLD"));
             fs::rename(other, folder);
             fs::rename(folder / "FRESH", folder / "NamE");
         },
         "NamE"},
    };
    for (const auto& [what, change, expected] : steps) {
        change();
        EXPECT_EQ(found(), expected) << what;
    }
}

TEST(HostPath, DrivesComeFromTheFirstFolderNamed) {
    const TempDrive drive;
    const std::string prefix = (drive.Top() / "prefix").string(), home = (drive.Top() / "home").string();
    for (const std::string& folder : {prefix + "/dosdevices", prefix + "/drive_c", home + "/.wine/dosdevices"})
        std::filesystem::create_directories(folder);
    std::filesystem::create_symlink("../drive_c", prefix + "/dosdevices/c:"); // relative, as Wine makes it
    for (const char* link : {"D:", "z:"}) std::filesystem::create_symlink(home, home + "/.wine/dosdevices/" + link);
    const ScopedVariable noDrives("KLN_DRIVES", std::nullopt), wine("WINEPREFIX", prefix), user("HOME", home);
    EXPECT_EQ(HostPath("C:\\x"), prefix + "/drive_c/x");
    EXPECT_EQ(HostPath("Z:\\tmp"), "/tmp");
    const ScopedVariable noPrefix("WINEPREFIX", std::nullopt);
    EXPECT_EQ(HostPath("d:\\x"), home + "/x");
    EXPECT_EQ(HostPath("z:\\x"), home + "/x");
    EXPECT_EQ(ErrorOf([] { HostPath("C:\\x"); }), kErrPathNotFound);
}

TEST(WindowsPath, TakesTheDriveThatSaysMost) {
    const TempDrive drive;
    const std::string c = (drive.Top() / "c").string();
    drive.MakeFolders("KORLAN/SYS");
    drive.AddDrive('k', c + "/KORLAN");
    std::filesystem::create_directory_symlink(c, drive.Top() / "way");
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"C:\\", {c, c + "/"}},
        {"C:\\a b.txt", {c + "/a b.txt", c + "/KORLAN/./SYS/../..//a b.txt", (drive.Top() / "way/a b.txt").string()}},
        {"K:\\", {c + "/KORLAN"}},
        {"K:\\SYS\\x", {c + "/KORLAN/SYS/x"}},
        {"C:\\KORLANX", {c + "/KORLANX"}},
        {"Z:\\", {"/"}},
        {"Z:\\usr\\bin", {"/usr/bin"}},
    };
    for (const auto& [expected, hosts] : rows)
        for (const std::string& host : hosts) EXPECT_EQ(WindowsPath(host), expected) << host;
    std::filesystem::current_path(drive.HostPathOf("KORLAN/SYS"));
    EXPECT_EQ(WindowsPath("x"), "K:\\SYS\\x");
}

} // namespace
} // namespace korlan
