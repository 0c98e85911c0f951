#include "catalogue/Catalogue.h"

#include "tests/support/HttpServer.h"
#include "tests/support/ProgramTest.h"
#include "tests/support/SqliteFile.h"

#include <fstream>

namespace korlan {
namespace {

using test::HttpAnswer;

std::string BytesOf(const std::string& hostPath) {
    std::ifstream file(hostPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class CatalogueTest : public test::ProgramTest {
protected:
    CatalogueTest() { Suite.UpdateUrl = server.Url("/u"); }

    // Runs a search over the catalogue in the temporary folder; the caller presets 1.
    std::int32_t Search() {
        path = "C:\\KORLAN\\Temp\\Update.mdb";
        std::int32_t result = 1;
        GetLatestFiles(path, result);
        return result;
    }
    void Master(const std::vector<std::string>& packs) {
        std::vector<std::vector<std::string>> rows;
        for (const auto& pack : packs) rows.push_back({pack, "Root", "1", "1-1-2004,0:0:0", pack + ".zip"});
        std::remove(drive.HostPathOf("KORLAN/Temp/Update.mdb").c_str());
        test::RunSql(drive.HostPathOf("KORLAN/Temp/Update.mdb"), test::CatalogueSql(rows));
    }
    void ServePack(const std::string& name, const std::vector<std::vector<std::string>>& rows) {
        const std::string file = drive.HostPathOf("made.sqlite");
        std::remove(file.c_str());
        test::RunSql(file, test::CatalogueSql(rows));
        server.Answer("/u/" + name, {.body = BytesOf(file)});
    }
    void ServeSample() {
        for (const char* name : {"SP1.mdb", "SP2.mdb", "SP3.mdb"})
            server.Answer(std::string("/u/") + name, {.body = BytesOf(std::string(KLN_TEST_DATA "/jet/") + name)});
        drive.Write("KORLAN/Temp/Update.mdb", BytesOf(KLN_TEST_DATA "/jet/Update.mdb"));
    }

    test::HttpServer server;
    std::string path;
};

TEST_F(CatalogueTest, ReadsTheMakersDatabases) {
    ServeSample();
    Tables.AppliedSPList.Append("sp2.MDB");
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(path, "C:\\KORLAN\\Temp\\SP3.mdb");
    ASSERT_EQ(Tables.FileArraySP.UpperBound(), 2);
    EXPECT_EQ(Tables.FileArraySP[1].FileName, "SP1.mdb");
    EXPECT_EQ(Tables.FileArraySP[2].FileName, "SP3.mdb");
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 21);
    EXPECT_EQ(Tables.FileArraySP[2].Files.UpperBound(), 12);
    // Three archives of the third pack stand in the first one already; names that differ in case are two.
    EXPECT_EQ(Tables.FileArray.UpperBound(), 21 + 12 - 3);
    EXPECT_EQ(Tables.FileArray[1].FileName, "TESSARY.EXE");
    EXPECT_EQ(Tables.FileArray[1].Filedate, "14-3-2003,8:5:0");
    EXPECT_EQ(Tables.FileArray[1].FilePath, "Root");
    EXPECT_EQ(Tables.FileArray[1].FileSize, "4321280");
    EXPECT_EQ(Tables.FileArray[22].FileZipName, "TessaryDOTTexe.zip");
    ASSERT_EQ(Tables.NewFolderArray.UpperBound(), 3);
    EXPECT_EQ(Tables.NewFolderArray[3].FolderName, "\\Docs\\Release Notes");
    EXPECT_TRUE(Tables.CatalogueDatabase); // the last one stays open
    for (const SPMember& member : Tables.FileArraySP[1].Files) EXPECT_EQ(member.UpdateFlag, 0);
}

TEST_F(CatalogueTest, AppliedPacksAreComparedTrimmedAndUpperCased) {
    Master({" sp1.MDB ", "S P2.mdb", "SP3.mdb"});
    for (const char* entry : {"SP1.mdb", "SP2.mdb"}) Tables.AppliedSPList.Append(entry);
    EXPECT_EQ(Search(), 1);
    ASSERT_EQ(Tables.FileArraySP.UpperBound(), 2); // blanks inside the name matter
    EXPECT_EQ(Tables.FileArraySP[1].FileName, "S P2.mdb");
}

TEST_F(CatalogueTest, MergesPacksByArchiveAndFoldersByIdentity) {
    Master({"A", "B"});
    ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"},
                    {"\\X", "NEWFOLDER", "", "", "NF"},
                    {"TWO.DLL", "Root", "2", "1-1-2004,0:0:0", "two.zip"},
                    {"TWO.DLL", "\\SYS", "2", "1-1-2004,0:0:0", "two.zip"},
                    {"Z.DLL", "NewFolder", "1", "1-1-2004,0:0:0", "z.zip"}}); // a file row: the word is exact
    ServePack("B", {{"OTHER.DLL", "\\LIB", "9", "9-9-2009,9:9:9", "one.zip"},
                    {"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "ONE.zip"},
                    {"\\Y", "NEWFOLDER", "", "", "NF"}});
    EXPECT_EQ(Search(), 1);
    ASSERT_EQ(Tables.FileArray.UpperBound(), 4);
    EXPECT_EQ(Tables.FileArray[1].FileName, "ONE.DLL"); // first-seen columns stay
    EXPECT_EQ(Tables.FileArray[4].FileZipName, "ONE.zip");
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 4);
    EXPECT_EQ(Tables.FileArraySP[2].Files.UpperBound(), 2);
    ASSERT_EQ(Tables.NewFolderArray.UpperBound(), 1);
    EXPECT_EQ(Tables.NewFolderArray[1].FolderName, "\\X");

    Tables.FileArray[2].UpdateFlag = 1; // two.zip, twice in the first pack
    Tables.FileArray[1].UpdateFlag = 1;
    UpdateFileArraySP();
    const std::int32_t marks[] = {1, 1, 0, 0};
    for (std::int32_t i = 1; i <= 4; ++i) EXPECT_EQ(Tables.FileArraySP[1].Files[i].UpdateFlag, marks[i - 1]) << i;
    EXPECT_EQ(Tables.FileArraySP[2].Files[1].UpdateFlag, 1);
    EXPECT_EQ(Tables.FileArraySP[2].Files[2].UpdateFlag, 0);
}

TEST_F(CatalogueTest, EverySearchStartsAfresh) {
    Master({"A"});
    ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"}, {"\\X", "NEWFOLDER", "", "", "NF"}});
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(Tables.FileArray.UpperBound(), 1);
    EXPECT_EQ(Tables.NewFolderArray.UpperBound(), 1);
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 1);
}

TEST_F(CatalogueTest, APackThatCannotBeFetchedIsPassedOverUnlessAnOlderCopyIsThere) {
    Master({"GONE", "A"});
    ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"}});
    EXPECT_EQ(Search(), 1);
    ASSERT_EQ(Tables.FileArraySP.UpperBound(), 2);
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 0);
    EXPECT_EQ(Tables.FileArray.UpperBound(), 1);

    test::RunSql(drive.HostPathOf("KORLAN/Temp/GONE"),
                 test::CatalogueSql({{"OLD.DLL", "Root", "1", "1-1-2004,0:0:0", "old.zip"}}));
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 1);
    EXPECT_EQ(Tables.FileArray[1].FileName, "OLD.DLL");
}

TEST_F(CatalogueTest, AnErrorStopsTheSearchAndKeepsWhatWasMerged) {
    const struct {
        const char* what;
        std::string body;
    } packs[] = {
        {"a page in its place", "<html><body>Not here</body></html>"},
        {"nothing", ""},
        {"a torn database", BytesOf(KLN_TEST_DATA "/jet/SP1.mdb").substr(0, 40000)},
        {"no table", BytesOf(KLN_TEST_DATA "/jet/jet3/notable.mdb")},
        {"a column less", BytesOf(KLN_TEST_DATA "/jet/jet3/missingcol.mdb")},
    };
    for (const auto& pack : packs) {
        Master({"A", "BAD", "C"});
        ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"}});
        ServePack("C", {{"TWO.DLL", "Root", "1", "1-1-2004,0:0:0", "two.zip"}});
        server.Answer("/u/BAD", {.body = pack.body});
        EXPECT_EQ(Search(), 0) << pack.what;
        EXPECT_EQ(Tables.FileArray.UpperBound(), 1) << pack.what;
    }
}

TEST_F(CatalogueTest, AMasterCatalogueThatIsMissingTornOrLeadsOutside) {
    path = "C:\\KORLAN\\Temp\\Update.mdb";
    std::int32_t result = 5;
    GetLatestFiles(path, result);
    EXPECT_EQ(result, 5);

    drive.Write("KORLAN/Temp/Update.mdb", BytesOf(KLN_TEST_DATA "/jet/Update.mdb").substr(0, 9000));
    EXPECT_EQ(Search(), 0);

    drive.Write("secret.mdb", "mine");
    server.Answer("/u/..\\..\\secret.mdb", {.body = "theirs"});
    server.Answer("/u/../../secret.mdb", {.body = "theirs"});
    for (const char* name : {"..\\..\\secret.mdb", "../../secret.mdb", "C:\\secret.mdb"}) {
        Master({name});
        EXPECT_EQ(Search(), 0) << name;
        EXPECT_EQ(drive.Read("secret.mdb"), "mine") << name;
    }
}

TEST_F(CatalogueTest, CancelEndsTheLoopAfterThePackUnderWay) {
    Master({"A", "B"});
    ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"},
                    {"TWO.DLL", "Root", "1", "1-1-2004,0:0:0", "two.zip"}});
    ServePack("B", {{"THREE.DLL", "Root", "1", "1-1-2004,0:0:0", "three.zip"}});
    test::Desktop().onControlChanged = [](const Control&, Aspect, std::int32_t) {
        if (Tables.FileArray.UpperBound() == 1) korlan::Run.CancelRequested = 1; // between the rows of the first pack
    };
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(korlan::Run.CancelRequested, 1);
    EXPECT_EQ(Tables.FileArray.UpperBound(), 2);
    EXPECT_EQ(Tables.FileArraySP[2].Files.UpperBound(), 0);
}

} // namespace
} // namespace korlan
