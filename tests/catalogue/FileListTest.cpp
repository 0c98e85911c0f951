#include "catalogue/FileList.h"

#include "tests/support/Failing.h"
#include "tests/support/ProgramTest.h"

namespace korlan {
namespace {

TEST(RowsLinked, FollowsTheRulesInOneDirection) {
    const std::tuple<const char*, const char*, const char*, bool> cases[] = {
        {"\\SYS", "\\SYS", "A.DLL", true},
        {"\\SYS", "\\sys", "A.DLL", false},              // the same text, to the letter
        {"\\COUNTRY\\GERMAN", "\\ROOT", "A.DLL", false}, // "ROOT" and nothing else
        {"\\country\\german", "\\COUNTRY\\ENGLISH", "A.TXT", true},
        {"\\LIB", "\\KDS_CML\\X", "A.SPC", true},
        {"\\KDS_CML\\X", "\\LIB", "A.PART", true},
        {"\\SYS", "\\SYS", "A.hlp", false}, // help files never follow
        {"Root", "\\COUNTRY\\GERMAN", "A.CNT.TXT", false},
        {"\\COUNTRY\\LIB", "\\KDS_CML", "A.SPC", true}, // a later rule links where an earlier one does not
    };
    for (const auto& [changed, other, name, linked] : cases)
        EXPECT_EQ(RowsLinked(changed, other, name), linked) << changed << " to " << other << " " << name;
}

class FileListTest : public test::ProgramTest {
protected:
    void Add(const std::string& name, const std::string& designation, std::int32_t flag = 1) {
        FileRecord record;
        record.FileName = name;
        record.FilePath = designation;
        record.FileSize = "4096";
        record.UpdateFlag = flag;
        record.LocalFolder = "C:\\Korlan" + (designation == "Root" ? "" : designation) + "\\";
        Tables.FileArray.Append(record);
    }
    std::string Checks() {
        std::string checks;
        for (std::int32_t i = 1; i <= list.Count(); ++i) {
            EXPECT_EQ(list.Row(i).smallIcon, list.Row(i).checked ? 8 : 3) << "row " << i;
            checks += list.Row(i).checked ? '1' : '0';
        }
        return checks;
    }
    ListView& list = frmUpdate.lvwFilesList;
};

TEST_F(FileListTest, ShowsOneCheckedRowForEachMarkedRecord) {
    Add("A.DLL", "Root");
    Add("B.DLL", "\\SYS", 0);
    Add("C.DLL", "\\Sys\\sub");
    DisplayFilesInformationsFromWeb();
    EXPECT_EQ(Checks(), "11");
    const ListRow& row = list.Row(2);
    EXPECT_EQ(test::ErrorOf([this] { list.AddRow(1, "FILE-\\Sys\\sub\\C.DLL", "", "NOTDELETE"); }), kErrKeyNotUnique);
    EXPECT_EQ(row.subItems, (std::vector<SharedText>{"C:\\KORLAN\\SYS\\SUB", "4096", "Not updated", "\\Sys\\sub"}));
    EXPECT_EQ(Tables.FileArray[2].Row, 0);
    EXPECT_EQ(Tables.FileArray[3].Row, frmUpdate.CheckedCount);
}

TEST_F(FileListTest, AToggleCarriesOverToLinkedRows) {
    const std::pair<const char*, const char*> files[] = {
        {"A.EXE", "Root"},   {"B.DLL", "Root"}, {"T.TXT", "\\COUNTRY\\GERMAN"},
        {"P.PART", "\\LIB"}, {"H.HLP", "Root"}, {"M.SPC", "\\KDS_CML"},
    };
    for (const auto& [name, designation] : files) Add(name, designation);
    DisplayFilesInformationsFromWeb();
    list.OnItemCheck = lvwFilesList_ItemCheck;
    const std::tuple<std::int32_t, std::string, std::int32_t, std::string> toggles[] = {
        {1, "000111", 3, "3 File(s) Selected"}, // the other Root file and the language's, not the help file
        {5, "000101", 2, "3 File(s) Selected"}, // a help file changes its own row and the count, and nothing else
        {4, "000000", 0, "0 File(s) Selected"},
        {3, "111000", 3, "3 File(s) Selected"}, // back on: Root follows the language, too
        {6, "111101", 5, "5 File(s) Selected"}, // models carry their libraries
    };
    for (const auto& [row, checks, count, message] : toggles) {
        list.UserToggle(row);
        EXPECT_EQ(Checks(), checks);
        EXPECT_EQ(frmUpdate.CheckedCount, count) << checks;
        EXPECT_EQ(frmUpdate.lblMsgline.Caption(), message) << checks;
        EXPECT_EQ(frmUpdate.cmdUpdate.Enabled(), count > 0) << checks;
    }
}

} // namespace
} // namespace korlan
