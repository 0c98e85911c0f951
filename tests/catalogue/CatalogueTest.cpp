#include "catalogue/Catalogue.h"
#include "TestData.h"

#include "tests/support/HttpServer.h"
#include "tests/support/ProgramTest.h"
#include "tests/support/SqliteFile.h"

#include <fstream>

namespace korlan {
namespace {

std::string Sample(const std::string& name) {
    std::ifstream file(KLN_TEST_DATA "/jet/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class CatalogueTest : public test::ProgramTest {
protected:
    CatalogueTest() { Settings.UpdateUrl = server.Url("/u"); }

    // Runs a search over the catalogue in the temporary folder; the caller presets 1.
    std::int32_t Search() {
        path = "C:\\KORLAN\\Temp\\Update.mdb";
        std::int32_t result = 1;
        GetLatestFiles(path, result);
        return result;
    }
    void WriteCatalogue(const std::string& file, const std::vector<std::vector<std::string>>& rows) const {
        std::filesystem::remove(drive.HostPathOf(file));
        test::RunSql(drive.HostPathOf(file), test::CatalogueSql(rows));
    }
    void Master(const std::vector<std::string>& packs) const {
        std::vector<std::vector<std::string>> rows;
        for (const auto& pack : packs) rows.push_back(Row(pack, "Root", pack + ".zip"));
        WriteCatalogue("KORLAN/Temp/Update.mdb", rows);
    }
    void ServePack(const std::string& name, const std::vector<std::vector<std::string>>& rows) {
        WriteCatalogue("made.sqlite", rows);
        server.Answer("/u/" + name, {.body = drive.Read("made.sqlite")});
    }
    static std::vector<std::string> Row(const std::string& name, const std::string& folder, const std::string& zip) {
        return {name, folder, "1", "1-1-2004,0:0:0", zip};
    }

    // The flags of every pack's files.
    static std::string Marks() {
        std::string marks;
        for (const SPRecord& pack : Tables.FileArraySP) {
            for (const SPMember& member : pack.Files) marks += std::to_string(member.UpdateFlag);
            marks += ' ';
        }
        return marks;
    }

    test::HttpServer server;
    std::string path;
};

TEST_F(CatalogueTest, ReadsTheMakersDatabases) {
    for (const char* name : {"SP1.mdb", "SP2.mdb", "SP3.mdb"})
        server.Answer(std::string("/u/") + name, {.body = Sample(name)});
    drive.Write("KORLAN/Temp/Update.mdb", Sample("Update.mdb"));
    Tables.AppliedSPList.Append("sp2.MDB");
    EXPECT_EQ(Search(), 1);
    ASSERT_EQ(Tables.FileArraySP.UpperBound(), 2);
    EXPECT_EQ(Tables.FileArraySP[2].FileName, "SP3.mdb");
    // Three archives of the third pack stand in the first one already; names that differ in case are two.
    EXPECT_EQ(Tables.FileArray.UpperBound(), 21 + 12 - 3);
    const FileRecord& first = Tables.FileArray[1];
    EXPECT_EQ(first.FileName + " " + *first.FilePath + " " + *first.FileSize + " " + first.Filedate,
              "TESSARY.EXE Root 4321280 14-3-2003,8:5:0");
}

TEST_F(CatalogueTest, MergesPacksByArchiveAndFoldersByIdentity) {
    Master({" a.MDB ", "A", "B", "A .mdb"});
    Tables.AppliedSPList.Append("A.mdb"); // packs are compared trimmed and in capitals; blanks inside matter
    ServePack("A", {Row("ONE.DLL", "Root", "one.zip"), Row("\\X", "NEWFOLDER", "NF"), Row("TWO.DLL", "Root", "two.zip"),
                    Row("TWO.DLL", "\\SYS", "two.zip"),
                    Row("Z.DLL", "NewFolder", "z.zip")}); // a file row: the word is exact
    ServePack("B",
              {Row("OTHER.DLL", "\\LIB", "one.zip"), Row("ONE.DLL", "Root", "ONE.zip"), Row("\\Y", "NEWFOLDER", "NF")});
    EXPECT_EQ(Search(), 1);
    ASSERT_EQ(Tables.FileArray.UpperBound(), 4);
    EXPECT_EQ(Tables.FileArray[1].FileName, "ONE.DLL"); // first-seen columns stay
    ASSERT_EQ(Tables.NewFolderArray.UpperBound(), 1);
    EXPECT_EQ(Marks(), "0000 00  ");
    Tables.FileArray[2].UpdateFlag = 1; // two.zip, twice in the first pack
    Tables.FileArray[1].UpdateFlag = 1;
    UpdateFileArraySP();
    EXPECT_EQ(Marks(), "1100 10  ");
}

TEST_F(CatalogueTest, ColumnsAreReadWhereTheyAreNeeded) {
    Tables.AppliedSPList.Append("OLD.mdb");
    drive.Write("KORLAN/Temp/Update.mdb", "");
    test::RunSql(drive.HostPathOf("KORLAN/Temp/Update.mdb"),
                 "CREATE TABLE Files (FileName TEXT); INSERT INTO Files VALUES ('OLD.mdb');");
    EXPECT_EQ(Search(), 1) << "an applied pack";

    Master({"A", "B"});
    ServePack("A", {Row("ONE.DLL", "Root", "one.zip")});
    test::RunSql(drive.HostPathOf("made.sqlite"), "ALTER TABLE Files DROP COLUMN FileName; "
                                                  "ALTER TABLE Files DROP COLUMN Filedate;");
    server.Answer("/u/B", {.body = drive.Read("made.sqlite")});
    EXPECT_EQ(Search(), 1) << "a known archive";
    server.Answer("/u/A", {.status = 404});
    EXPECT_EQ(Search(), 1) << "an older copy of it";
    drive.Write("KORLAN/Temp/A", "");
    test::RunSql(drive.HostPathOf("KORLAN/Temp/A"), test::CatalogueSql({}));
    EXPECT_EQ(Search(), 0) << "an archive of its own";
}

TEST_F(CatalogueTest, AnErrorStopsTheSearchAndKeepsWhatWasMerged) {
    Master({"A", "BAD", "C"});
    ServePack("A", {Row("ONE.DLL", "Root", "one.zip")});
    ServePack("C", {Row("TWO.DLL", "Root", "two.zip")});
    const std::pair<const char*, std::string> packs[] = {
        {"a page in its place", "<html><body>Not here</body></html>"},
        {"a torn database", Sample("SP1.mdb").substr(0, 40000)},
        {"no table", Sample("jet3/notable.mdb")},
        {"a column less", Sample("jet3/missingcol.mdb")},
    };
    for (const auto& [what, body] : packs) {
        server.Answer("/u/BAD", {.body = body});
        EXPECT_EQ(Search(), 0) << what;
        EXPECT_EQ(Tables.FileArray.UpperBound(), 1) << what;
    }
}

TEST_F(CatalogueTest, AMasterCatalogueThatIsTornOrLeadsOutside) {
    drive.Write("KORLAN/Temp/Update.mdb", Sample("Update.mdb").substr(0, 9000));
    EXPECT_EQ(Search(), 0);

    drive.Write("secret.mdb", "mine");
    ServePack("A", {Row("ONE.DLL", "Root", "one.zip")});
    for (const char* name : {"..\\..\\secret.mdb", "../../secret.mdb", "C:\\secret.mdb"}) {
        server.Answer(std::string("/u/") + name, {.body = "theirs"});
        Master({name, "A"});
        EXPECT_EQ(Search(), 1) << name;
        EXPECT_EQ(Tables.FileArray.UpperBound(), 1) << name << ": the others still count";
        EXPECT_EQ(drive.Read("secret.mdb"), "mine") << name;
    }
}

TEST_F(CatalogueTest, APackThatCannotBeFetchedIsPassedOverUnlessAnOlderCopyIsThere) {
    Master({"GONE", "A"});
    ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"}});
    EXPECT_EQ(Search(), 1);
    ASSERT_EQ(Tables.FileArraySP.UpperBound(), 2);
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 0);
    EXPECT_FALSE(Tables.FileArraySP[1].Read);
    EXPECT_TRUE(Tables.FileArraySP[2].Read);
    EXPECT_EQ(Tables.FileArray.UpperBound(), 1);

    test::RunSql(drive.HostPathOf("KORLAN/Temp/GONE"),
                 test::CatalogueSql({{"OLD.DLL", "Root", "1", "1-1-2004,0:0:0", "old.zip"}}));
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(Tables.FileArraySP[1].Files.UpperBound(), 1);
    EXPECT_EQ(Tables.FileArray[1].FileName, "OLD.DLL");
}

TEST_F(CatalogueTest, CancelEndsTheLoopAfterThePackUnderWay) {
    Master({"A", "B"});
    ServePack("A", {{"ONE.DLL", "Root", "1", "1-1-2004,0:0:0", "one.zip"},
                    {"TWO.DLL", "Root", "1", "1-1-2004,0:0:0", "two.zip"}});
    ServePack("B", {{"THREE.DLL", "Root", "1", "1-1-2004,0:0:0", "three.zip"}});
    test::Desktop().onControlChanged = [](const Control&, Aspect, std::int32_t) {
        if (Tables.FileArray.UpperBound() == 1) Flags.CancelRequested = 1; // between the rows of the first pack
    };
    EXPECT_EQ(Search(), 1);
    EXPECT_EQ(Flags.CancelRequested, 1);
    EXPECT_EQ(Tables.FileArray.UpperBound(), 2);
    EXPECT_EQ(Tables.FileArraySP[2].Files.UpperBound(), 0);
}

} // namespace
} // namespace korlan
