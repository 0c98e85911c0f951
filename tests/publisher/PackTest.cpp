#include "publisher/CatalogueFile.h"
#include "publisher/Files.h"
#include "tests/publisher/PublisherFixture.h"
#include "tests/support/Failing.h"

#include <sys/stat.h>

#include <functional>

namespace korlan::publisher {
namespace {

using PackTest = test::PublisherTest;

CatalogueRows Read(const std::filesystem::path& file) {
    return ReadCatalogue(file);
}

TEST_F(PackTest, MakesArchivesAPackAndTheMaster) {
    Stage("Root/KLWCAP.DLL", std::string(5000, 'x'));
    Stage("KDS_CML/sub/OPAMP.SPC");
    Stage("LIB/a#b%.PART");
    Stage("LIB/a_b_.PART"); // another name that is spelled like it in an address
    drive.MakeFolders("staging/Samples/New");
    drive.MakeFolders("server/.klnpub-interrupted");
    ASSERT_EQ(Publish("SP4"), 0) << said;
    const CatalogueRows rows = Read(Host("server/SP4.mdb"));
    const std::string date = "10-3-2004,7:1:12"; // an even second
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[0], (CatalogueRow{"OPAMP.SPC", "\\KDS_CML\\sub", "7", date, "SP4_KDS_CML_sub_OPAMPDOTTSPC.zip"}));
    EXPECT_NE(rows[1].FileZipName, rows[2].FileZipName);
    EXPECT_EQ(rows[3], (CatalogueRow{"KLWCAP.DLL", "Root", "5000", date, "SP4_KLWCAPDOTTDLL.zip"}));
    EXPECT_EQ(rows[4], (CatalogueRow{"\\Samples\\New", "NEWFOLDER", "", "", "SP4_Samples_New"}));
    EXPECT_EQ(drive.Names("server").size(), 6u); // and nothing else is left

    ClearStaging();
    Stage("Root/KLWCAP.DLL", "newer", 30);
    ASSERT_EQ(Publish("SP5.mdb"), 0) << said;
    const CatalogueRows master = Read(Host("server/Update.mdb"));
    ASSERT_EQ(master.size(), 2u);
    EXPECT_EQ(master[0].FileName + master[1].FileName, "SP5.mdbSP4.mdb"); // the newest first
    struct stat status {};
    ASSERT_EQ(stat(Host("server/SP5_KLWCAPDOTTDLL.zip").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST_F(PackTest, OverwritesNothingUnlessItIsTold) {
    Stage("Root/A.TXT", "old");
    ASSERT_EQ(Publish("SP4"), 0) << said;
    const std::string before = drive.Read("server/SP4_ADOTTTXT.zip"), master = drive.Read("server/Update.mdb");
    Stage("Root/A.TXT", "new content", 9);
    EXPECT_EQ(Publish("sp4"), 1); // whatever its case
    EXPECT_NE(said.find("sp4.mdb is there already"), std::string::npos) << said;
    EXPECT_EQ(drive.Read("server/SP4_ADOTTTXT.zip"), before);
    EXPECT_EQ(drive.Read("server/Update.mdb"), master);
    EXPECT_EQ(Publish("SP4", true), 0) << said;
    EXPECT_EQ(Read(Host("server/SP4.mdb"))[0].Filedate, "10-3-2004,7:9:12");
    EXPECT_EQ(Read(Host("server/Update.mdb")).size(), 1u);
}

// Each of these trees is refused with a line that says why, and the server's folder stays as it was.
TEST_F(PackTest, RefusesWhatNoMachineCouldInstall) {
    const std::pair<const char*, std::function<void()>> trees[] = {
        {"is a link", [&] { std::filesystem::create_symlink("A.TXT", Host("staging/Root/L.TXT")); }},
        {"is a link", [&] { std::filesystem::create_directory_symlink("Root", Host("staging/LIB")); }},
        {"is neither a file nor a folder", [&] { mkfifo(Host("staging/Root/P.TXT").c_str(), 0644); }},
        {"cannot be read", [&] { Stage("Root/U.TXT"), drive.SetMode("staging/Root/U.TXT", 0); }},
        {"cannot be read", [&] { drive.MakeFolders("staging/LIB"), drive.SetMode("staging/LIB", 0); }},
        {"which no name on Windows may have", [&] { Stage("Root/a:b.TXT"); }},
        {"is the name of a device", [&] { Stage("Root/con.txt"); }},
        {"ends with a blank or a dot", [&] { Stage("LIB/sub./X.TXT"); }},
        {"no UTF-8", [&] { Stage("Root/\xFF.TXT"); }},
        {"differs only in case from A.TXT", [&] { Stage("Root/a.txt"); }},
        {"differs only in case from ROOT", [&] { Stage("ROOT/B.TXT"); }},
        {"lies in no folder", [&] { Stage("STRAY.TXT"); }},
        {"is a folder below Root", [&] { Stage("Root/SUB/X.TXT"); }},
        {"[two-dots]", [&] { Stage("LIB/X.V2.PART"); }},
        {"[quote]", [&] { Stage("LIB/it's.PART"); }},
        {"Code page 1252 cannot hold", [&] { Stage("Root/Ж.TXT"); }},
        {"a time that no archive keeps",
         [&] { Stage("Root/O.TXT"), drive.Touch("staging/Root/O.TXT", 1970, 1, 2, 0, 0, 0); }},
        {"nothing to publish", [&] { ClearStaging(); }},
        {"is no folder", [&] { std::filesystem::remove_all(Host("staging")); }},
        {"Unrecognized database format", [&] { drive.Write("server/Update.mdb", std::string(9000, 'x')); }},
        {"another publisher", [&] { static const FolderLock lock(Host("server")); }},
    };
    for (const auto& [reason, prepare] : trees) {
        ClearStaging();
        std::filesystem::remove(Host("server/Update.mdb"));
        Stage("Root/A.TXT");
        prepare();
        const auto before = drive.Names("server");
        int code = 0;
        {
            drive.SetMode("server", 0777);
            const test::AsOrdinaryUser nobody;
            code = Publish("SP4");
        }
        EXPECT_NE(code, 0) << reason;
        EXPECT_NE(said.find(reason), std::string::npos) << reason << " is not in:\n" << said;
        EXPECT_EQ(drive.Names("server"), before) << reason;
        if (drive.Exists("staging/LIB")) drive.SetMode("staging/LIB", 0755);
    }
    for (const char* name : {"", "Update", "a b", "../x", ".mdb"}) EXPECT_EQ(Publish(name), 3) << name;
}

} // namespace
} // namespace korlan::publisher
