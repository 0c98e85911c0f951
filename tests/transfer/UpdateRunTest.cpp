#include "transfer/UpdateRun.h"

#include "platform/Database.h"
#include "platform/MsgBox.h"
#include "tests/support/Failing.h"
#include "tests/support/HttpServer.h"
#include "tests/support/ProgramTest.h"
#include "tests/support/SqliteFile.h"
#include "tests/support/ZipWriter.h"

#include <algorithm>

namespace korlan {
namespace {

using test::Desktop;
using test::Process;

constexpr std::int32_t kStamp = 1078477632; // 5-3-2004,9:7:12 UTC
constexpr const char* kDate = "5-3-2004,9:7:12";

class UpdateRunTest : public test::ProgramTest {
protected:
    UpdateRunTest() {
        Settings.UpdateUrl = server.Url("/u");
        Settings.SysName = "Korlan";
    }

    static std::string Archive(const std::string& member, const std::string& data) {
        return test::ZipWriter().Add({.name = member, .data = data, .extendedTime = kStamp}).Bytes();
    }
    // A record with its row, checked, and its archive on the server.
    void Offer(const std::string& name, const std::string& folder, const std::string& data) {
        FileRecord record;
        record.FileName = name;
        record.FileZipName = name + ".zip";
        record.Filedate = kDate;
        record.LocalFolder = "C:\\KORLAN\\" + folder;
        record.Row = list.Count() + 1;
        Tables.FileArray.Append(record);
        list.AddRow(record.Row, name, name, "NOTDELETE");
        list.SetChecked(record.Row, true);
        server.Answer("/u/" + name + ".zip", {.body = Archive(name, data)});
    }
    std::string Status(std::int32_t row) const {
        const auto& items = list.Row(row).subItems;
        return items.size() < 3 ? "" : *items[2];
    }
    std::size_t Asked(const std::string& name) {
        const auto targets = server.Targets();
        return static_cast<std::size_t>(std::count(targets.begin(), targets.end(), "/u/" + name + ".zip"));
    }

    test::HttpServer server;
    ListView& list = frmUpdate.lvwFilesList;
};

TEST_F(UpdateRunTest, FetchesAndInstallsWhatIsChecked) {
    drive.Write("KORLAN/A.DLL", "old");
    drive.SetMode("KORLAN/A.DLL", 0444);
    Offer("A.DLL", "", "new a");
    Offer("B.DLL", "SYS\\NEW\\", std::string(5000, 'b'));
    Offer("C.DLL", "SYS\\", "not wanted");
    Offer("klnupdta.exe", "", "updater");
    Offer("subcir.idx", "SYS\\", "index");
    list.SetChecked(3, false);
    Tables.UpdatedFiles.Append("of the run before");
    std::string unpacked;
    Desktop().onControlChanged = [&](const Control& control, Aspect aspect, std::int32_t) {
        if (&control != &frmUpdate.lblMsgline || aspect != Aspect::Caption) return;
        if (const std::string& text = frmUpdate.lblMsgline.Caption(); text.starts_with("Unc")) unpacked += text + ";";
    };

    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_EQ(unpacked, "Uncompressing : A.DLL;Uncompressing : B.DLL;Uncompressing : klnupdta.exe;"
                        "Uncompressing : subcir.idx;");
    EXPECT_EQ(std::vector(Tables.UpdatedFiles.begin(), Tables.UpdatedFiles.end()),
              (std::vector<std::string>{"A.DLL.zip", "B.DLL.zip", "klnupdta.exe.zip", "subcir.idx.zip"}));
    EXPECT_EQ(ReadIniString("LIVEUPDATESPCFROMWEB", "SPCFILEMDB", ""), "1");
    EXPECT_TRUE(list.Row(1).bold && !list.Row(3).bold);
    EXPECT_EQ(drive.Read("KORLAN/A.DLL"), "new a");
    EXPECT_EQ(drive.Read("KORLAN/SYS/NEW/B.DLL"), std::string(5000, 'b'));
    EXPECT_FALSE(drive.Exists("KORLAN/SYS/C.DLL"));
    EXPECT_EQ(Asked("A.DLL"), 3u); // one probe, two requests of the download
    EXPECT_EQ(Asked("C.DLL"), 0u);
    EXPECT_EQ(*list.Row(1).subItems[1] + *list.Row(2).subItems[1], "1KB5KB");
    EXPECT_EQ(Status(1), "Updated");
    EXPECT_EQ(Flags.NewUpdaterLoaded, 1);
    ASSERT_EQ(Process().started.size(), 2u);
    EXPECT_EQ(Process().started[0].commandLine, "regsvr32 /u /s \"C:\\KORLAN\\A.DLL\"");
    EXPECT_EQ(Process().started[1].commandLine, "regsvr32 /s \"C:\\KORLAN\\A.DLL\"");
}

TEST_F(UpdateRunTest, AFailedTransferStopsBeforeTheInstallPassAndRetryResumesThere) {
    Offer("A.DLL", "", "new a");
    Offer("B.DLL", "", std::string(9000, 'b'));
    Offer("C.DLL", "", "new c");
    const std::string whole = Archive("B.DLL", std::string(9000, 'b'));
    server.Answer("/u/B.DLL.zip", {.body = whole, .cutsAfter = 4000});

    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_EQ(Flags.DownloadFailed, 1);
    EXPECT_EQ(frmUpdate.ResumeIndex, 2);
    EXPECT_EQ(frmUpdate.lblMsgline.Caption(), "Live Update Failed.Click Retry to try again");
    EXPECT_FALSE(drive.Exists("KORLAN/Temp/B.DLL.zip")); // the part is gone, the first archive stays
    EXPECT_FALSE(drive.Exists("KORLAN/A.DLL"));
    EXPECT_EQ(Asked("C.DLL"), 0u);
    EXPECT_EQ(Status(1) + Status(2), "Copied from web");

    server.Answer("/u/B.DLL.zip", {.body = whole});
    frmUpdate.IsRetry = 1;
    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_EQ(Flags.DownloadFailed, 0);
    EXPECT_EQ(Asked("A.DLL"), 3u); // not fetched again
    EXPECT_EQ(Flags.NewUpdaterLoaded, 0);
    for (const char* name : {"KORLAN/A.DLL", "KORLAN/B.DLL", "KORLAN/C.DLL"}) EXPECT_TRUE(drive.Exists(name)) << name;
}

// Kept: only Update clears the flag of a failed run, and only a whole transfer otherwise. After an error of the install
// pass the download pass stands at the last record, and what that one is decides what a Retry comes to.
TEST_F(UpdateRunTest, AnErrorOfTheInstallPassStaysUntilTheNextTransfer) {
    enum Last { Fetched, Unchecked, Unlisted };
    const struct {
        Last last;
        std::int32_t failedAfterRetry, failedAfterAnother;
        bool installed;
    } cases[] = {{Fetched, 1, 0, true}, {Unchecked, 1, 1, false}, {Unlisted, 1, 1, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.last);
        Tables.FileArray.Clear();
        list.ClearRows();
        frmUpdate.IsRetry = Flags.DownloadFailed = 0;
        Offer("P.PART", "LIB\\", "parts");
        Offer("A.DLL", "", "new a");
        Offer("Z.DLL", "", "new z");
        list.SetChecked(3, c.last != Unchecked);
        Tables.FileArray[3].Row = c.last == Unlisted ? 0 : 3;
        drive.Write("KORLAN/LIB/Parts.abd", "no database");
        EXPECT_EQ(UpdateFilesFromWeb(), 1);
        EXPECT_EQ(frmUpdate.ResumeIndex, 3);
        EXPECT_FALSE(drive.Exists("KORLAN/LIB/P.PART")); // kept: the installed file goes, not the archive
        EXPECT_TRUE(drive.Exists("KORLAN/Temp/P.PART.zip"));
        EXPECT_FALSE(drive.Exists("KORLAN/LIB/.klnindex") || frmUpdate.prgRun.Visible());

        const std::string index = drive.HostPathOf("KORLAN/LIB/Parts.abd");
        std::filesystem::remove(index);
        test::RunSql(index, "CREATE TABLE PartFields (Library); INSERT INTO PartFields VALUES ('P.PART')");
        frmUpdate.IsRetry = 1;
        EXPECT_EQ(UpdateFilesFromWeb(), 0);
        EXPECT_EQ(Flags.DownloadFailed, c.failedAfterRetry);
        EXPECT_FALSE(drive.Exists("KORLAN/Temp/Z.DLL.zip"));
        EXPECT_EQ(UpdateFilesFromWeb(), 0);
        EXPECT_EQ(Flags.DownloadFailed, c.failedAfterAnother);
        EXPECT_EQ(drive.Exists("KORLAN/LIB/P.PART"), c.installed);
        EXPECT_EQ(drive.Exists("KORLAN/Z.DLL"), c.last == Fetched);
        EXPECT_FALSE(OpenDatabase("C:\\KORLAN\\LIB\\Parts.abd", false, true, "")->OpenRecordset("PartFields")->Eof())
            << "nobody is there to give new rows";
        for (const char* file : {"KORLAN/LIB/P.PART", "KORLAN/Z.DLL"}) std::filesystem::remove(drive.HostPathOf(file));
        CleanUpTemporaryFiles();
    }
}

TEST_F(UpdateRunTest, ATransferThatCannotBeWrittenIsAFailedOne) {
    drive.Write("KORLAN/B.DLL", "installed");
    Offer("B.DLL", "", std::string(90'000, 'b'));
    Offer("C.DLL", "", "new c");
    {
        const test::FileLimit limit(20'000);
        EXPECT_EQ(UpdateFilesFromWeb(), 0);
    }
    EXPECT_EQ(drive.Read("KORLAN/B.DLL"), "installed");
    EXPECT_EQ(Flags.DownloadFailed + Asked("C.DLL"), 1u);
    EXPECT_TRUE(frmUpdate.CmdRetry.Visible());

    frmUpdate.IsRetry = 1;
    EXPECT_EQ(UpdateFilesFromWeb() + Flags.DownloadFailed, 0);
    EXPECT_EQ(drive.Read("KORLAN/B.DLL") + drive.Read("KORLAN/C.DLL"), std::string(90'000, 'b') + "new c");
}

TEST_F(UpdateRunTest, WhatCannotBeUnpackedIsReportedAndTheRunGoesOn) {
    Offer("P.PART", "LIB\\", "");
    Offer("A.DLL", "", "");
    modZip.OptionFlags[3] = 1; // as if the archive library could not be called
    EXPECT_EQ(UpdateFilesFromWeb() + Flags.DownloadFailed, 0);
    const std::string text = "File not updated properly : C:\\KORLAN\\";
    EXPECT_EQ(Desktop().boxes, (std::vector{test::ShownBox{text + "LIB\\P.PART", kBoxCritical, "Korlan"},
                                            test::ShownBox{text + "A.DLL", kBoxCritical, "Korlan"}}));
    EXPECT_EQ(Status(1) + Status(2) + std::to_string(Tables.UpdatedFiles.UpperBound()),
              "Copied from webCopied from web0");
}

TEST_F(UpdateRunTest, AProgramFolderThatCannotBeReadEndsAPerfectRunWell) {
    Offer("A.DLL", "SYS\\", "new a");
    for (const char* folder : {"KORLAN/SYS", "KORLAN/Temp"}) drive.SetMode(folder, 0777);
    drive.SetMode("KORLAN", 0311);
    std::filesystem::permissions(drive.Top(), std::filesystem::perms::all);
    const test::AsOrdinaryUser user;
    EXPECT_EQ(UpdateFilesFromWeb() + Flags.DownloadFailed, 0);
    EXPECT_EQ(drive.Read("KORLAN/SYS/A.DLL") + Status(1), "new aUpdated");
}

TEST_F(UpdateRunTest, AnArchiveLeftOverIsReusedWhenItHoldsTheCataloguesVersion) {
    const auto other = test::ZipWriter().Add({.name = "A.DLL", .data = "x", .extendedTime = kStamp + 1}).Bytes();
    const struct {
        std::string left;
        int status; // of the server
        const char *installed, *size;
        std::size_t requests;
    } cases[] = {{Archive("A.DLL", "kept"), 200, "kept", "", 0},
                 {other, 200, "fetched", " 0KB", 3},
                 {Archive("B.DLL", "x"), 200, "fetched", " 0KB", 3},
                 {"PK no archive", 200, "fetched", " 0KB", 3},
                 {other, 404, "installed", "", 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.left + std::to_string(c.status));
        Tables.FileArray.Clear();
        list.ClearRows();
        Offer("A.DLL", "", "fetched");
        if (c.status != 200) server.Answer("/u/A.DLL.zip", {.status = c.status});
        drive.Write("KORLAN/A.DLL", "installed");
        drive.Write("KORLAN/Temp/A.DLL.zip", c.left);
        if (c.requests == 0) { // what lies there and is not to be replaced is looked at
            drive.Write("KORLAN/Temp/A.DLL", "read-only");
            drive.Touch("KORLAN/Temp/A.DLL", 2004, 3, 5, 9, 7, 12);
            drive.SetMode("KORLAN/Temp/A.DLL", 0444);
            Desktop().answers = {kAnswerNo};
        }
        const std::size_t before = Asked("A.DLL");
        EXPECT_EQ(UpdateFilesFromWeb() + Flags.DownloadFailed, 0);
        EXPECT_EQ(drive.Read("KORLAN/A.DLL"), c.installed);
        EXPECT_EQ(Asked("A.DLL") - before, c.requests);
        EXPECT_EQ(list.Row(1).subItems.size() < 2 ? "" : *list.Row(1).subItems[1], c.size);
        EXPECT_FALSE(drive.Exists("KORLAN/Temp/A.DLL"));
    }
}

TEST_F(UpdateRunTest, CreatesTheCataloguesFoldersInsideTheInstallation) {
    for (const char* folder : {"\\Help\\Main", "Ignored\\Docs", "nothing", "\\..\\..\\evil", "\\Later"})
        Tables.NewFolderArray.Append({folder, folder});
    CreateNewFolders();
    EXPECT_EQ(drive.Exists("KORLAN/Help/Main") + drive.Exists("KORLAN/Docs") + drive.Exists("KORLAN/Later"), 3);
    for (const char* folder : {"evil", "KORLAN/nothing"}) // the refused costs no other
        EXPECT_FALSE(drive.Exists(folder)) << folder;
}

TEST_F(UpdateRunTest, CleansUpTheTemporaryFolderOnly) {
    drive.Write("KORLAN/Temp/a.zip", "x");
    drive.Write("KORLAN/Temp/sub/keep.txt", "x");
    drive.SetMode("KORLAN/Temp/a.zip", 0444);
    drive.Write("KORLAN/keep.txt", "x");
    Offer("B.DLL", "", "");
    Offer("sub/A.DLL", "", "");
    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_TRUE(drive.Exists("KORLAN/Temp/sub/A.DLL.zip"));
    CleanUpTemporaryFiles();
    EXPECT_EQ(drive.Names("KORLAN/Temp"), std::vector<std::string>{"sub"});
    EXPECT_EQ(drive.Names("KORLAN/Temp/sub"), std::vector<std::string>{"keep.txt"});
    EXPECT_TRUE(drive.Exists("KORLAN/keep.txt"));
}

} // namespace
} // namespace korlan
