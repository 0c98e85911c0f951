#include "platform/FileSystem.h"

#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

namespace korlan {
namespace {

using test::ErrorOf;
using test::TempDrive;
using testing::ElementsAre;

void WriteFile(const std::string& path, std::string_view bytes, OutputFile::Mode mode = OutputFile::Mode::Create) {
    OutputFile file(path, mode);
    file.Write(bytes);
    file.Close();
}

TEST(Files, EachCallReportsWhatStoppedIt) {
    const TempDrive drive;
    drive.Write("file.txt", "0123456789");
    drive.Write("locked.txt", "locked");
    drive.SetMode("locked.txt", 0444);
    drive.Write("sealed/x", ""); // nothing may be made or erased there
    drive.SetMode("sealed", 0555);
    drive.MakeFolders("folder");
    drive.MakeDevice("full");
    const auto expect = [](std::int32_t error, auto call, std::initializer_list<std::string> paths) {
        for (const std::string& path : paths) EXPECT_EQ(ErrorOf([&] { call(path); }), error) << path;
    };
    const auto read = [](const std::string& path) { ReadWholeFile(path); };
    const auto create = [](const std::string& path) { WriteFile(path, "x"); };
    const auto append = [](const std::string& path) { WriteFile(path, "x", OutputFile::Mode::Append); };
    expect(kErrFileNotFound, read, {"C:\\none.txt"});
    expect(kErrPathNotFound, read, {"C:\\none\\x.txt", "C:\\file.txt\\x", "Q:\\x"});
    expect(kErrPathAccess, read, {"C:\\folder"});
    expect(kErrFileNotFound, FileLength, {"C:\\none.txt"});
    expect(kErrPathAccess, create, {"C:\\locked.txt", "C:\\folder"});
    expect(kErrPathNotFound, create, {"C:\\none\\x", "C:\\" + std::string(300, 'n')});
    expect(kErrPathAccess, append, {"C:\\locked.txt"});
    expect(kErrFileNotFound, SetAttributesNormal, {"C:\\none"});
    expect(kErrPathAccess, CreateOneFolder, {"C:\\FOLDER", "C:\\file.txt"});
    expect(kErrPathNotFound, ListNormalFiles, {"C:\\none", "C:\\file.txt"});
    expect(kErrPathNotFound, TryFolder, {"C:\\none", "C:\\file.txt"});
    EXPECT_EQ(drive.Read("locked.txt"), "locked");
    EXPECT_TRUE(FolderExists("c:\\FOLDER\\") && !FolderExists("C:\\file.txt") && !FolderExists("C:\\none"));
    for (const char* path : {"C:\\none", "C:\\folder", "C:\\locked.txt", "Q:\\x", "C:\\"})
        EXPECT_FALSE(EraseFile(path)) << path;
    SetAttributesNormal("C:\\LOCKED.TXT");
    EXPECT_TRUE(EraseFile("C:\\LOCKED.TXT"));
    SyncFileSystem("C:\\none"); // its error is nobody's
    drive.Write("held.txt", "held");
    if (const test::HeldFile held(drive.HostFile("held.txt")); test::kOnWindows) {
        for (const auto& call : std::initializer_list<std::function<void(std::string)>>{read, create, append})
            expect(kErrPermissionDenied, call, {"C:\\held.txt"});
        EXPECT_FALSE(EraseFile("C:\\held.txt") || FileOpensForReading("C:\\held.txt"));
    }
    EXPECT_EQ(drive.Read("held.txt"), "held");
#ifndef _WIN32 // which has no such device, nor links for everybody, nor folders closed by a bit
    expect(kErrPathAccess, read, {"C:\\full"});
    expect(kErrDiskFull, create, {"C:\\full"});
    std::filesystem::create_symlink("sealed/x", drive.HostPathOf("link"));
    drive.SetMode("sealed/x", 0444);
    SetAttributesNormal("C:\\link");
    struct stat status {};
    EXPECT_TRUE(stat(drive.HostPathOf("link").c_str(), &status) == 0 && (status.st_mode & S_IWUSR) == 0)
        << "what a link names stays as it is";
    const test::AsOrdinaryUser user;
    expect(kErrPermissionDenied, create, {"C:\\sealed\\new"});
    EXPECT_FALSE(EraseFile("C:\\sealed\\x"));
#endif
}

TEST(Files, TwoSpellingsAreOneFileAndEveryByteArrives) {
    const TempDrive drive;
    WriteFile("C:\\MiXed.Txt", "first, and longer");
    WriteFile("C:\\mixed.txt", "second");
    {
        OutputFile file("C:\\MIXED.TXT", OutputFile::Mode::Append);
        file.Write(" more");
        EXPECT_EQ(ReadWholeFile("c:\\mixed.TXT"), "second more"); // out at once
    }                                                             // not closed: taken back
    EXPECT_EQ(ReadWholeFile("c:\\mixed.TXT"), "second");
    EXPECT_THAT(drive.Names(), ElementsAre("MiXed.Txt"));
    std::string expected;
    {
        OutputFile file("C:\\out", OutputFile::Mode::Create);
        for (std::size_t i = 0; i < 3000; ++i) {
            file.Write(std::string(i % 150, static_cast<char>(i)));
            expected.append(i % 150, static_cast<char>(i));
        }
    } // closed by its end
    EXPECT_TRUE(drive.Read("out") == expected);
    EXPECT_EQ(FileLength("C:\\out"), static_cast<std::int64_t>(expected.size()));
    EXPECT_EQ(ReadFilePart("C:\\out", 10'000, 500), expected.substr(10'000, 500));
    EXPECT_EQ(ReadFilePart("C:\\out", expected.size() - 3, 500), expected.substr(expected.size() - 3));
    EXPECT_EQ(ReadFilePart("C:\\out", expected.size() + 5, 500), "");
}

TEST(Files, PatternsFindTheFirstNormalFile) {
    const TempDrive drive;
    for (const char* file : {"b.txt", "A.TXT", "nodot", ".dot", "a1.mdb", "näh.doc"})
        drive.Write("d/" + std::string(file), "");
    if (!test::kOnWindows) // where no file has such a name
        for (const char* name : {"0back\\slash.txt", "0dot.txt.", "0blank.txt "})
            std::ofstream(drive.HostPathOf("d") + "/" + name);
    drive.MakeFolders("d/0folder.txt");
    drive.SetMode("d/a1.mdb", 0444);
    std::filesystem::current_path(drive.HostPathOf("d"));
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {".dot", {"C:\\d\\*.*"}},
        {"A.TXT", {"C:\\d\\*.txt", "C:\\d\\*t*x*t", "C:\\d\\?????"}},
        {"b.txt", {"C:\\D\\B.TXT", "C:\\D\\b.txt. "}},
        {".dot", {"C:\\d\\.DOT", "C:\\d\\.*"}},
        {"a1.mdb", {"C:\\d\\A1.*", "*.MDB"}},
        {"näh.doc", {"C:\\d\\n?h.DOC"}},
        {"nodot", {"C:\\d\\n*"}},
        {"", {"C:\\d\\???", "C:\\d\\0dot.txt.", "C:\\d\\0folder.txt", "C:\\d\\none.txt", "C:\\d", "C:\\d\\"}},
        {"", {"C:\\none\\*.txt", "C:\\d\\b.txt\\*", "Q:\\*.txt", ""}},
    };
    for (const auto& [expected, patterns] : rows)
        for (const std::string& pattern : patterns) EXPECT_EQ(FindNormalFile(pattern), expected) << pattern;
    EXPECT_THAT(ListNormalFiles("C:\\D"), ElementsAre(".dot", "A.TXT", "a1.mdb", "b.txt", "nodot", "näh.doc"));
}

TEST(TimeStamps, AreReadInUtc) {
    const TempDrive drive;
    const test::ScopedVariable zone("TZ", "Asia/Tokyo");
    tzset();
    const std::string path = std::string(200, 'd') + "/a.dll"; // of any length
    drive.Write(path, "");
    drive.Touch(path, 2024, 2, 29, 23, 59, 58);
    drive.SetMode(path, 0444);
    const std::int32_t handle = OpenForStamp(TempDrive::Path(path));
    std::int64_t ticks = 0;
    CalendarTime time{};
    EXPECT_TRUE(ReadWriteTime(handle, ticks) && TicksToCalendar(ticks, time) == 1);
    EXPECT_THAT((std::vector{time.year, time.month, time.day, time.hour, time.minute, time.second}),
                ElementsAre(2024, 2, 29, 23, 59, 58));
    CloseStamp(handle);
    EXPECT_FALSE(ReadWriteTime(handle, ticks)); // a closed handle
    EXPECT_EQ(OpenForStamp("C:\\none"), -1);
    EXPECT_EQ(TicksToCalendar(-1, time), 0);
}

} // namespace
} // namespace korlan
