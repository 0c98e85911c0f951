#include "platform/linux/HostPath.h"

#include "platform/FileSystem.h"
#include "platform/linux/ChangeStamp.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

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
    ChangeCurrentFolder("C:\\both");

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

// Each round makes and takes names as fast as the machine can, so that many changes share one tick of the clock.
TEST(HostPath, AnOldListingNeverHidesAFile) {
    const TempDrive drive;
    drive.MakeFolders("d");
    for (int round = 0; round < 300; ++round) {
        const std::string number = std::to_string(round), asked = "C:\\D\\FILE" + number;
        ASSERT_EQ(HostPath(asked), drive.HostPathOf("d/FILE" + number));
        drive.Write("d/File" + number, "");
        ASSERT_EQ(HostPath(asked), drive.HostPathOf("d/File" + number));
    }
    // And across a listing that was kept: the folder rests until its stamp has settled, is asked, then changes.
    std::this_thread::sleep_for(std::chrono::milliseconds(80));
    HostPath("C:\\d\\OTHER");
    ASSERT_EQ(HostPath("C:\\d\\OTHER"), drive.HostPathOf("d/OTHER"));
    drive.Write("d/Other", "");
    EXPECT_EQ(HostPath("C:\\d\\OTHER"), drive.HostPathOf("d/Other"));
}

// Newer kernels give every change a stamp of its own, so the rule for coarse stamps is tried on stamps, not files.
TEST(ChangeStamp, IsTrustedOnlyWhenItsTickIsOver) {
    constexpr std::int64_t kMillisecond = 1'000'000, kSecond = 1000 * kMillisecond;
    const auto settled = [](std::int64_t changed, std::int64_t now) {
        ChangeStamp stamp;
        stamp.changed = changed;
        return stamp.Settled(now);
    };
    EXPECT_FALSE(settled(100 * kSecond + 1, 100 * kSecond + 20 * kMillisecond)); // a slow tick is 10 ms
    EXPECT_TRUE(settled(100 * kSecond + 1, 100 * kSecond + 200 * kMillisecond));
    EXPECT_FALSE(settled(100 * kSecond, 101 * kSecond + 999 * kMillisecond)); // stamps in steps of two seconds
    EXPECT_TRUE(settled(100 * kSecond, 103 * kSecond));
    EXPECT_FALSE(settled(100 * kSecond + 1, 90 * kSecond)); // the clock was set back
}

TEST(HostPath, ADriveMayBeMadeAnew) {
    const TempDrive drive;
    for (const char* folder : {"first", "second"}) {
        std::filesystem::create_directory(drive.Top() / folder);
        std::filesystem::remove(drive.Top() / "drives/e:");
        drive.AddDrive('e', (drive.Top() / folder).string());
        for (const int wait : {0, 80, 0}) { // before and after the link is kept
            std::this_thread::sleep_for(std::chrono::milliseconds(wait));
            EXPECT_EQ(HostPath("E:\\x"), (drive.Top() / folder / "x").string());
        }
    }
    std::filesystem::remove(drive.Top() / "drives/e:");
    EXPECT_FALSE(DriveIsThere("E:\\"));
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
    ChangeCurrentFolder("C:\\KORLAN\\SYS");
    EXPECT_EQ(WindowsPath("x"), "K:\\SYS\\x");
    EXPECT_EQ(CurrentFolder(), "K:\\SYS");
}

} // namespace
} // namespace korlan
