#include "catalogue/FileList.h"

#include "platform/RuntimeError.h"
#include "tests/support/ProgramTest.h"

namespace korlan {
namespace {

TEST(RowsLinked, FollowsTheRulesInOneDirection) {
    const struct {
        const char* changed;
        const char* other;
        const char* name;
        bool linked;
    } cases[] = {
        {"\\SYS", "\\SYS", "A.DLL", true},
        {"\\SYS", "\\sys", "A.DLL", false}, // the same text, to the letter
        {"\\COUNTRY\\GERMAN", "Root", "A.DLL", true},
        {"\\COUNTRY\\GERMAN", "\\ROOT", "A.DLL", false}, // "ROOT" and nothing else
        {"\\country\\german", "\\COUNTRY\\ENGLISH", "A.TXT", true},
        {"Root", "\\COUNTRY\\GERMAN", "A.TXT", true},
        {"Root", "\\SYS", "A.DLL", false},
        {"\\SYS\\ROOTS", "\\COUNTRY\\X", "A.TXT", true},
        {"\\LIB", "\\KDS_CML\\X", "A.SPC", true},
        {"\\LIBRARY", "\\LIB\\EXTRA", "A.PART", true},
        {"\\LIB", "\\KDS_MOD", "A.SPC", false},
        {"\\KDS_CML\\X", "\\LIB", "A.PART", true},
        {"\\KDS_CML\\X", "\\KDS_CML\\Y", "A.SPC", false},
        {"\\SYS", "\\SYS", "A.hlp", false}, // help files never follow
        {"Root", "\\COUNTRY\\GERMAN", "A.CNT.TXT", false},
        {"Root", "Root", "A.GID", false},
        // A later rule links where an earlier one does not.
        {"\\COUNTRY\\LIB", "\\KDS_CML", "A.SPC", true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(RowsLinked(c.changed, c.other, c.name), c.linked) << c.changed << " to " << c.other << " " << c.name;
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
    void Toggle(std::int32_t row) {
        list.OnItemCheck = lvwFilesList_ItemCheck;
        list.UserToggle(row);
    }
    ListView& list = frmUpdate.lvwFilesList;
};

TEST_F(FileListTest, ShowsOneCheckedRowForEachMarkedRecord) {
    Add("A.DLL", "Root");
    Add("B.DLL", "\\SYS", 0);
    Add("C.DLL", "\\Sys\\sub");
    DisplayFilesInformationsFromWeb();
    ASSERT_EQ(list.Count(), 2);
    const ListRow& row = list.Row(2);
    EXPECT_EQ(row.key, "FILE-\\Sys\\sub\\C.DLL");
    EXPECT_EQ(row.text, "C.DLL");
    EXPECT_EQ(row.subItems, (std::vector<std::string>{"C:\\KORLAN\\SYS\\SUB", "4096", "Not updated", "\\Sys\\sub"}));
    EXPECT_EQ(row.tag, "FILE");
    EXPECT_EQ(Checks(), "11");
    EXPECT_TRUE(list.Visible());
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "Live update found the following new files:");
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "");
    EXPECT_EQ(frmUpdate.CheckedCount, 2);
    EXPECT_EQ(frmUpdate.WizardState, 0);
}

TEST_F(FileListTest, NothingMarkedEndsTheSearchAndRecordsThePacks) {
    drive.Write("KORLAN/SYS/TESSARY.INI", "[LIVEUPDATEFROMWEB]\r\nNumber=2\r\n");
    Add("A.DLL", "Root", 0);
    for (const char* pack : {"SP1.mdb", "SP2.mdb", "SP3.mdb"}) Tables.FileArraySP.Append({}).FileName = pack;
    DisplayFilesInformationsFromWeb();
    EXPECT_EQ(frmUpdate.lblUpdate.Caption(), "No updates found");
    EXPECT_EQ(frmUpdate.WizardState, 1);
    EXPECT_FALSE(frmUpdate.cmdUpdate.Visible());
    EXPECT_EQ(frmUpdate.cmdCancel.Caption(), "Finish");
    EXPECT_FALSE(list.Visible());
    EXPECT_EQ(drive.Read("KORLAN/SYS/TESSARY.INI"),
              "[LIVEUPDATEFROMWEB]\r\nNumber=5\r\n3=SP1.mdb\r\n4=SP2.mdb\r\n5=SP3.mdb\r\n");
}

TEST_F(FileListTest, AMarkedRecordWithoutItsFolderRaises) {
    Add("A.DLL", "Root");
    Tables.FileArray[1].LocalFolder.clear();
    EXPECT_THROW(DisplayFilesInformationsFromWeb(), RuntimeError);
}

TEST_F(FileListTest, AToggleCarriesOverToLinkedRows) {
    Add("A.EXE", "Root");
    Add("B.DLL", "Root");
    Add("T.TXT", "\\COUNTRY\\GERMAN");
    Add("P.PART", "\\LIB");
    Add("H.HLP", "Root");
    Add("M.SPC", "\\KDS_CML");
    DisplayFilesInformationsFromWeb();

    Toggle(1); // the other Root file and the language's, not the help file
    EXPECT_EQ(Checks(), "000111");
    EXPECT_EQ(frmUpdate.CheckedCount, 3);
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "3 File(s) Selected");

    Toggle(5); // a help file changes its own row and the count, and nothing else
    EXPECT_EQ(Checks(), "000101");
    EXPECT_EQ(frmUpdate.CheckedCount, 2);
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "3 File(s) Selected");

    Toggle(4);
    EXPECT_EQ(Checks(), "000000");
    EXPECT_EQ(frmUpdate.CheckedCount, 0);
    EXPECT_FALSE(frmUpdate.cmdUpdate.Enabled());

    Toggle(3); // back on: Root follows the language, too
    EXPECT_EQ(Checks(), "111000");
    EXPECT_EQ(frmUpdate.CheckedCount, 3);
    EXPECT_TRUE(frmUpdate.cmdUpdate.Enabled());

    Toggle(2);
    Toggle(6); // models carry their libraries
    EXPECT_EQ(Checks(), "000101");
    list.SetLocked(true);
    Toggle(6);
    EXPECT_EQ(Checks(), "000101");
}

} // namespace
} // namespace korlan
