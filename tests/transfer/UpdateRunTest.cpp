#include "transfer/UpdateRun.h"

#include "platform/Database.h"
#include "tests/support/HttpServer.h"
#include "tests/support/ProgramTest.h"
#include "tests/support/SqliteFile.h"
#include "tests/support/ZipWriter.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>

namespace korlan {
namespace {

using test::Desktop;
using test::Process;

constexpr std::int32_t kStamp = 1078477632; // 5-3-2004,9:7:12 UTC
constexpr const char* kDate = "5-3-2004,9:7:12";

class UpdateRunTest : public test::ProgramTest {
protected:
    UpdateRunTest() { Settings.UpdateUrl = server.Url("/u"); }

    static std::string Archive(const std::string& member, const std::string& data) {
        return test::ZipWriter().Add({.name = member, .data = data, .extendedTime = kStamp}).Bytes();
    }
    // A record with its row, checked, and its archive on the server.
    void Offer(const std::string& name, const std::string& folder, const std::string& data) {
        FileRecord record;
        record.FileName = name;
        record.FileZipName = record.ServerZipName = name + ".zip";
        record.Filedate = kDate;
        record.LocalFolder = "C:\\KORLAN\\" + folder;
        record.LocalFile = record.LocalFolder + name;
        record.TempZipFile = Settings.TempFolder + "\\" + record.ServerZipName;
        record.Row = list.Count() + 1;
        Tables.FileArray.Append(record);
        list.AddRow(record.Row, name, name, "NOTDELETE");
        list.SetChecked(record.Row, true);
        server.Answer("/u/" + name + ".zip", {.body = Archive(name, data)});
    }
    std::string Status(std::int32_t row) const {
        const auto& items = list.Row(row).subItems;
        return items.size() < 3 ? "" : items[2];
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
    list.SetChecked(3, false);

    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_EQ(drive.Read("KORLAN/A.DLL"), "new a");
    EXPECT_EQ(drive.Read("KORLAN/SYS/NEW/B.DLL"), std::string(5000, 'b'));
    EXPECT_FALSE(drive.Exists("KORLAN/SYS/C.DLL"));
    EXPECT_EQ(Asked("A.DLL"), 3u); // one probe, two requests of the download
    EXPECT_EQ(Asked("C.DLL"), 0u);
    EXPECT_EQ(list.Row(2).subItems[1], "5KB");
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

    server.Answer("/u/B.DLL.zip", {.body = whole});
    frmUpdate.IsRetry = 1;
    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_EQ(Flags.DownloadFailed, 0);
    EXPECT_EQ(Asked("A.DLL"), 3u); // not fetched again
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
        Offer("A.DLL", "", "new a");
        Offer("P.PART", "LIB\\", "parts");
        Offer("Z.DLL", "", "new z");
        list.SetChecked(3, c.last != Unchecked);
        Tables.FileArray[3].Row = c.last == Unlisted ? 0 : 3;
        drive.Write("KORLAN/LIB/Parts.abd", "no database");
        EXPECT_EQ(UpdateFilesFromWeb(), 1);
        EXPECT_EQ(frmUpdate.ResumeIndex, 3);
        EXPECT_FALSE(drive.Exists("KORLAN/LIB/P.PART")); // kept: the installed file goes, not the archive
        EXPECT_TRUE(drive.Exists("KORLAN/Temp/P.PART.zip"));

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

TEST_F(UpdateRunTest, ADiskThatFillsUpLeavesTheInstalledFile) {
    drive.Write("KORLAN/B.DLL", "installed");
    Offer("B.DLL", "", std::string(90'000, 'b'));
    Offer("C.DLL", "", "new c");
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit small{20'000, unlimited.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_EQ(UpdateFilesFromWeb(), 0); // kept: a file that cannot be written is no failed transfer
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(drive.Read("KORLAN/B.DLL"), "installed");
    EXPECT_EQ(drive.Read("KORLAN/C.DLL"), "new c");
    EXPECT_EQ(Status(1), "");

    EXPECT_EQ(UpdateFilesFromWeb(), 0); // what had come is no archive and is fetched anew
    EXPECT_EQ(drive.Read("KORLAN/B.DLL"), std::string(90'000, 'b'));
    std::signal(SIGXFSZ, before);
}

TEST_F(UpdateRunTest, AnArchiveLeftOverIsReusedWhenItHoldsTheCataloguesVersion) {
    const auto other = test::ZipWriter().Add({.name = "A.DLL", .data = "x", .extendedTime = kStamp + 1}).Bytes();
    const std::pair<std::string, bool> cases[] = {
        {Archive("A.DLL", "kept"), true}, {other, false}, {Archive("B.DLL", "x"), false}, {"PK no archive", false}};
    for (const auto& [left, reused] : cases) {
        Tables.FileArray.Clear();
        list.ClearRows();
        Offer("A.DLL", "", "fetched");
        drive.Write("KORLAN/Temp/A.DLL.zip", left);
        const std::size_t before = Asked("A.DLL");
        EXPECT_EQ(UpdateFilesFromWeb(), 0);
        EXPECT_EQ(drive.Read("KORLAN/A.DLL"), reused ? "kept" : "fetched") << left;
        EXPECT_EQ(Asked("A.DLL") - before, reused ? 0u : 3u) << left;
        EXPECT_FALSE(drive.Exists("KORLAN/Temp/A.DLL")) << left;
    }
}

TEST_F(UpdateRunTest, AHostileArchiveWritesNothingOutsideItsFolder) {
    drive.Write("outside.txt", "mine");
    Offer("A.DLL", "SYS\\", "");
    Desktop().answers = {kAnswerNo}; // two members end on one name
    server.Answer("/u/A.DLL.zip", {.body = test::ZipWriter()
                                               .Add({.name = "../../outside.txt", .data = "theirs"})
                                               .Add({.name = "C:\\outside.txt", .data = "theirs"})
                                               .Add({.name = "sub/A.DLL", .data = "new", .extendedTime = kStamp})
                                               .Bytes()});
    EXPECT_EQ(UpdateFilesFromWeb(), 0);
    EXPECT_EQ(drive.Read("outside.txt"), "mine");
    EXPECT_EQ(drive.Read("KORLAN/SYS/A.DLL"), "new");
    EXPECT_EQ(drive.Names("KORLAN/SYS"), (std::vector<std::string>{"A.DLL", "outside.txt"}));
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
    CleanUpTemporaryFiles();
    EXPECT_EQ(drive.Names("KORLAN/Temp"), std::vector<std::string>{"sub"});
    EXPECT_TRUE(drive.Exists("KORLAN/keep.txt"));
}

} // namespace
} // namespace korlan
