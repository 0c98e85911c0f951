#include "catalogue/Comparison.h"

#include "platform/FileSystem.h"
#include "tests/support/ProgramTest.h"

namespace korlan {
namespace {

class ComparisonTest : public test::ProgramTest {
protected:
    ComparisonTest() {
        drive.Write("KORLAN/SYS/A.DLL", "installed");
        drive.Touch("KORLAN/SYS/A.DLL", 2004, 3, 5, 9, 7, 2);
    }
    void Add(const std::string& name, const std::string& designation, const std::string& date,
             const std::string& zip = {}) {
        FileRecord record;
        record.FileName = name;
        record.FilePath = designation;
        record.Filedate = date;
        record.FileZipName = zip.empty() ? name + ".zip" : zip;
        Tables.FileArray.Append(record);
    }
    std::string Marks() {
        std::string flags;
        for (const FileRecord& record : Tables.FileArray) flags += record.UpdateFlag == 1 ? '1' : '0';
        return flags;
    }
};

TEST_F(ComparisonTest, MarksWhatIsMissingOrOlder) {
    const std::pair<const char*, const char*> cases[] = {
        {" 5-3-2004,9:7:12 ", "01"},   {"5-3-2004,9:7:59", "01"}, {"5-3-2004,9:8:0", "11"},
        {"05-03-2004,09:08:00", "11"}, {"6-3-2004,0:0:0", "11"},
    };
    for (const auto& [date, flags] : cases) { // the seconds are never read
        Tables = {};
        Add("a.dll", "\\sys", date);
        Add("MISSING.DLL", "\\SYS\\sub", "whatever");
        CompareUpdatableFiles();
        EXPECT_EQ(Marks(), flags) << date;
    }
    EXPECT_EQ(Tables.FileArray[2].LocalFile(), "C:\\KORLAN\\SYS\\SUB\\MISSING.DLL");
}

TEST_F(ComparisonTest, JudgesOnePathOnceAndModelArchivesByTheirList) {
    for (const char* applied : {"M.SPC.zip", "X.DLL.zip"}) Tables.AppliedSPCList.Append(applied);
    Add("M.SPC", "\\KDS_CML", "1-1-2004,0:0:0");
    Add("M2.SPC", "\\KDS_CML", "1-1-2004,0:0:0", "m.spc.zip"); // the name is compared exactly
    Add("X.DLL", "\\SYS", "1-1-2004,0:0:0");                   // no model
    Add("x.dll", "\\sys", "1-1-2005,0:0:0", "second.zip");
    CompareUpdatableFiles();
    EXPECT_EQ(Marks(), "0110");
}

TEST_F(ComparisonTest, AnErrorEndsThePassAndLeavesThePacksUnmarked) {
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"B.DLL", "ROOT", "1-1-2004,0:0:0", "100"},          // no second component
        {"B.DLL", "\\SYS\\..\\..", "1-1-2004,0:0:0", "100"}, // out of the installation
        {"B.DLL", "-evil\\x", "1-1-2004,0:0:0", "100"},      // a neighbour of the installation
        {"A.DLL", "\\SYS", "not a date", "110"},             // keeps its interim mark
    };
    for (const auto& [name, designation, date, flags] : cases) {
        Tables = {};
        Add("FIRST.DLL", "\\SYS", "1-1-2004,0:0:0");
        Add(name, designation, date);
        Add("LAST.DLL", "\\SYS", "1-1-2004,0:0:0");
        Tables.FileArraySP.Append({}).Files.Append({1, 0});
        CompareUpdatableFiles();
        EXPECT_EQ(Marks(), flags) << name << " " << designation << " " << date;
        EXPECT_EQ(Tables.FileArraySP[1].Files[1].UpdateFlag, 0) << date;
    }
}

TEST_F(ComparisonTest, ARefusedRecordCostsNoOther) {
    for (const char* name : {"..\\B.DLL", "C:B.DLL", "SUB\\B.DLL"}) Add(name, "\\SYS", "1-1-2004,0:0:0", "b.zip");
    Add("B.DLL", "\\SYS", "1-1-2004,0:0:0", "..\\b.zip");
    Add("", "\\SYS", "1-1-2004,0:0:0", "none.zip"); // is never there
    Add("LAST.DLL", "\\SYS", "1-1-2004,0:0:0");
    Tables.FileArraySP.Append({}).Files.Append({6, 0});
    CompareUpdatableFiles();
    EXPECT_EQ(Marks(), "000011");
    EXPECT_EQ(Tables.FileArraySP[1].Files[1].UpdateFlag, 1);
}

TEST_F(ComparisonTest, GetFileStampTellsUtcAndItsFailures) {
    for (const char* zone : {"America/Los_Angeles", "Australia/Sydney"}) {
        const test::ScopedVariable tz("TZ", zone);
        tzset();
        EXPECT_EQ(GetFileStamp("C:\\KORLAN\\SYS\\A.DLL"), "5-3-2004,9:7:2") << zone;
    }
    tzset();
    EXPECT_EQ(GetFileStamp("C:\\KORLAN\\SYS\\NONE.DLL"), "");
    EXPECT_EQ(test::Desktop().boxes, std::vector{(test::ShownBox{"Can't find the file", kBoxExclamation, ""})});
}

} // namespace
} // namespace korlan
