#include "catalogue/Comparison.h"

#include "platform/FileSystem.h"
#include "tests/support/ProgramTest.h"

namespace korlan {
namespace {

using test::Desktop;
using test::ShownBox;

class ComparisonTest : public test::ProgramTest {
protected:
    FileRecord& Add(const std::string& name, const std::string& designation, const std::string& date,
                    const std::string& zip = {}) {
        FileRecord record;
        record.FileName = name;
        record.FilePath = designation;
        record.Filedate = date;
        record.FileZipName = zip.empty() ? name + ".zip" : zip;
        return Tables.FileArray.Append(record);
    }
    void Install(const std::string& path, int hour, int minute, int second) {
        drive.Write(path, "installed");
        drive.Touch(path, 2004, 3, 5, hour, minute, second);
    }
    std::string Flags() {
        std::string flags;
        for (const FileRecord& record : Tables.FileArray) flags += record.UpdateFlag == 1 ? '1' : '0';
        return flags;
    }
};

TEST_F(ComparisonTest, MarksWhatIsMissingOrOlder) {
    const struct {
        const char* date;
        const char* flag;
    } cases[] = {
        {"5-3-2004,9:7:12", "0"},    {" 5-3-2004,9:7:12 ", "0"}, {"5-3-2004,9:7:59", "0"}, {"5-3-2004,9:8:0", "1"},
        {"05-03-2004,09:08:00", "1"}, {"5-3-2004,9:6:59", "0"},   {"6-3-2004,0:0:0", "1"},  {"5-3-2004,9:8:xx", "1"}, // the seconds are never read
        {"5-3-2003,23:59:0", "0"},
    };
    Install("KORLAN/SYS/A.DLL", 9, 7, 12);
    for (const auto& c : cases) {
        Tables = {};
        Add("a.dll", "\\sys", c.date);
        Add("MISSING.DLL", "\\SYS\\sub", "whatever");
        CompareUpdatableFiles();
        EXPECT_EQ(Flags(), std::string(c.flag) + "1") << c.date;
    }
    const FileRecord& missing = Tables.FileArray[2];
    EXPECT_EQ(missing.LocalFile, "C:\\KORLAN\\SYS\\SUB\\MISSING.DLL");
    EXPECT_EQ(missing.LocalFolder, "C:\\KORLAN\\SYS\\SUB\\");
    EXPECT_EQ(missing.ServerZipName, "MISSING.DLL.zip");
    EXPECT_EQ(missing.TempZipFile, "C:\\KORLAN\\Temp\\MISSING.DLL.zip");
    EXPECT_EQ(Tables.FileArray[1].LocalFile, ""); // not marked: no paths
}

TEST_F(ComparisonTest, ResolvesDesignations) {
    const struct {
        const char* designation;
        const char* folder;
    } cases[] = {
        {"Root", "C:\\KORLAN\\"},
        {"\\lib", "C:\\KORLAN\\LIB\\"},
        {"\\KDS_CML\\x\\y", "C:\\KORLAN\\KDS_CML\\X\\Y\\"},
        {"\\Help\\Main", "C:\\KORLAN\\Help\\Main\\"},
        {"\\ROOT", "C:\\KORLAN\\ROOT\\"},
    };
    for (const auto& c : cases) {
        Tables = {};
        Add("X.DLL", c.designation, "1-1-2004,0:0:0");
        CompareUpdatableFiles();
        EXPECT_EQ(Tables.FileArray[1].LocalFolder, c.folder) << c.designation;
    }
}

TEST_F(ComparisonTest, JudgesOnlyTheFirstRecordOfAPath) {
    Add("X.DLL", "\\SYS", "1-1-2004,0:0:0", "first.zip");
    Add("x.dll", "\\sys", "1-1-2005,0:0:0", "second.zip");
    CompareUpdatableFiles();
    EXPECT_EQ(Flags(), "10");
}

TEST_F(ComparisonTest, AModelArchiveInstalledBeforeIsNeverOfferedAgain) {
    Tables.AppliedSPCList.Append("M.SPC.zip");
    Tables.AppliedSPCList.Append("X.DLL.zip");
    Add("M.SPC", "\\KDS_CML", "1-1-2004,0:0:0");
    Add("M2.SPC", "\\KDS_CML", "1-1-2004,0:0:0", "m.spc.zip"); // the name is compared exactly
    Add("X.DLL", "\\SYS", "1-1-2004,0:0:0");
    CompareUpdatableFiles();
    EXPECT_EQ(Flags(), "011");
}

TEST_F(ComparisonTest, AnErrorEndsThePassAndLeavesThePacksUnmarked) {
    const struct {
        const char* name;
        const char* designation;
        const char* date;
        const char* flags;
    } cases[] = {
        {"B.DLL", "ROOT", "1-1-2004,0:0:0", "100"},         // no second component
        {"B.DLL", "\\SYS\\..\\..", "1-1-2004,0:0:0", "100"}, // out of the installation
        {"..\\B.DLL", "\\SYS", "1-1-2004,0:0:0", "100"},
        {"INSTALLED.DLL", "\\SYS", "not a date", "110"}, // keeps its interim mark
        {"INSTALLED.DLL", "\\SYS", "x", "100"},
    };
    Install("KORLAN/SYS/INSTALLED.DLL", 9, 7, 12);
    for (const auto& c : cases) {
        Tables = {};
        Add("A.DLL", "\\SYS", "1-1-2004,0:0:0");
        Add(c.name, c.designation, c.date);
        Add("C.DLL", "\\SYS", "1-1-2004,0:0:0");
        Tables.FileArraySP.Append({}).Files.Append({"A.DLL.zip", 0});
        CompareUpdatableFiles();
        EXPECT_EQ(Flags(), c.flags) << c.name << " " << c.designation << " " << c.date;
        EXPECT_EQ(Tables.FileArraySP[1].Files[1].UpdateFlag, 0) << c.date;
        EXPECT_EQ(Tables.FileArray[2].LocalFile, "") << c.date;
    }
    EXPECT_TRUE(Desktop().boxes.empty());
}

TEST_F(ComparisonTest, GetFileStampTellsUtcAndItsFailures) {
    Install("KORLAN/SYS/A.DLL", 9, 7, 2);
    drive.SetMode("KORLAN/SYS/A.DLL", 0444);
    for (const char* zone : {"UTC", "America/Los_Angeles", "Australia/Sydney"}) {
        const test::ScopedVariable tz("TZ", zone);
        tzset();
        EXPECT_EQ(GetFileStamp("C:\\KORLAN\\SYS\\A.DLL"), "5-3-2004,9:7:2") << zone;
    }
    tzset();
    EXPECT_EQ(GetFileStamp("C:\\KORLAN\\SYS\\NONE.DLL"), "");
    EXPECT_EQ(GetFileStamp("C:\\KORLAN\\SYS"), "");
    const ShownBox missing{"Can't find the file", 48, ""};
    EXPECT_EQ(Desktop().boxes, (std::vector<ShownBox>{missing, missing}));
}

} // namespace
} // namespace korlan
