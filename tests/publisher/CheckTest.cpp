// A catalogue that klnpub has made is clean; each slip planted in it is found, at its row, with its weight.
#include "publisher/Check.h"
#include "catalogue/FileTables.h"
#include "platform/Http.h"
#include "publisher/CatalogueFile.h"
#include "tests/publisher/PublisherFixture.h"
#include "tests/support/HttpServer.h"
#include "tests/support/SqliteFile.h"
#include "tests/support/ZipWriter.h"

#include <functional>

namespace korlan::publisher {
namespace {

using test::ZipEntry;

// 10 March 2004, 7:01:12 UTC, the time of every staged file.
constexpr std::int32_t kTime = 1078902072;

class CheckTest : public test::PublisherTest {
protected:
    CheckTest() {
        Stage("Root/KLWCAP.DLL");
        Stage("LIB/TTL74.PART");
        Stage("KDS_CML/OPAMP.SPC");
        Stage("SYS/OPAMP.SPC"); // another file of that name
        drive.MakeFolders("staging/Samples");
        EXPECT_EQ(Publish("SP4"), 0) << said;
        ClearStaging();
        Stage("Root/KLWCAP.DLL", "newer", 30);
        EXPECT_EQ(Publish("SP5"), 0) << said;
        EXPECT_EQ(WriteNoteOf("server/SP5.mdb"), 0);
    }

    int WriteNoteOf(const std::string& path) {
        const test::SaidText text;
        return WriteNote(Host("server"), Host(path));
    }
    int CheckServer(const std::string& where, const std::string& installation = {}) {
        const test::SaidText text;
        const int code = Check(where, installation);
        said = text.Text();
        return code;
    }
    void Edit(const std::string& pack, const std::function<void(CatalogueRows&)>& change) const {
        CatalogueRows rows = ReadCatalogue(Host("server/" + pack));
        change(rows);
        drive.Write("server/" + pack, BytesOfCatalogue(rows));
    }
    // Row 1 of SP4 is KDS_CML\OPAMP.SPC, 2 LIB\TTL74.PART, 3 Root KLWCAP.DLL, 5 the new folder.
    void EditRow(std::size_t row, std::string CatalogueRow::*column, const std::string& value) const {
        Edit("SP4.mdb", [&](CatalogueRows& rows) { rows.at(row - 1).*column = value; });
    }
    void Archive(const std::vector<ZipEntry>& members) const { // of row 2
        test::ZipWriter zip;
        for (const ZipEntry& member : members) zip.Add(member);
        drive.Write("server/SP4_LIB_TTL74DOTTPART.zip", zip.Bytes());
    }
    // SP4 as a database that its own tools could not write.
    void Sql(const std::vector<std::string>& row) const {
        std::filesystem::remove(Host("server/SP4.mdb"));
        test::RunSql(Host("server/SP4.mdb"), test::CatalogueSql({row}));
    }
    static ZipEntry Part(const std::string& name = "TTL74.PART") {
        return {.name = name, .data = "content", .extendedTime = kTime};
    }
};

using Row = CatalogueRow;

TEST_F(CheckTest, FindsNothingInWhatItPublishedAndEveryPlantedSlip) {
    ASSERT_EQ(CheckServer(Host("server")), 0) << said;
    ASSERT_EQ(said, "2 packs, 6 rows: 0 errors, 0 warnings\n");
    drive.MakeFolders("clean");
    std::filesystem::copy(Host("server"), Host("clean"), std::filesystem::copy_options::recursive);

    const auto add = [](const Row& row) { return [row](CatalogueRows& rows) { rows.push_back(row); }; };
    const std::string date = "10-3-2004,7:1:12", part = "SP4_LIB_TTL74DOTTPART.zip";
    const std::pair<std::string, std::function<void()>> slips[] = {
        {"Update.mdb: error [master-missing]", [&] { std::filesystem::remove(Host("server/Update.mdb")); }},
        {"Update.mdb: error [no-catalogue]", [&] { drive.Write("server/Update.mdb", "<html>"); }},
        {"Update.mdb row 2: error [pack-missing]", [&] { std::filesystem::remove(Host("server/SP4.mdb")); }},
        {"Update.mdb row 1: error [pack-name]",
         [&] { Edit("Update.mdb", [](auto& rows) { rows[0].FileName = "..\\SP5.mdb"; }); }},
        {"Update.mdb row 1: error [pack-name]",
         [&] { Edit("Update.mdb", [](auto& rows) { rows[0].FileName = "sub/SP5.mdb"; }); }},
        {"Update.mdb row 3: warning [pack-twice]",
         [&] {
             Edit("Update.mdb", add({" sp4.MDB", "", "", "", ""}));
         }},
        {"SP4.mdb: error [no-catalogue]",
         [&] { drive.Write("server/SP4.mdb", drive.Read("server/SP4.mdb").substr(0, 6000)); }},
        {"SP4.mdb: warning [no-rows]", [&] { Edit("SP4.mdb", [](auto& rows) { rows.clear(); }); }},
        {"SP4.mdb row 3: error [designation]", [&] { EditRow(3, &Row::FilePath, "ROOT"); }},
        {"SP4.mdb row 2: error [designation]", [&] { EditRow(2, &Row::FilePath, "LIB\\SUB"); }},
        {"SP4.mdb row 2: error [designation]", [&] { EditRow(2, &Row::FilePath, "\\LIB\\..\\.."); }},
        {"SP4.mdb row 2: error [designation]", [&] { EditRow(2, &Row::FilePath, "\\LIB\\a?"); }},
        {"SP4.mdb row 2: error [date]", [&] { EditRow(2, &Row::Filedate, "10.3.2004 7:01"); }},
        {"SP4.mdb row 2: error [date]", [&] { EditRow(2, &Row::Filedate, "3-31-2004,7:1:12"); }},
        {"SP4.mdb row 2: error [date]", [&] { EditRow(2, &Row::Filedate, "10-3-04,7:1:12"); }},
        {"SP4.mdb row 2: warning [odd-second]", [&] { EditRow(2, &Row::Filedate, "10-3-2004,7:1:13"); }},
        {"SP4.mdb row 2: warning [date-form]", [&] { EditRow(2, &Row::Filedate, "10-03-2004,07:01:12"); }},
        {"SP4.mdb row 2: error [other-time]", [&] { EditRow(2, &Row::Filedate, "10-3-2004,8:1:12"); }},
        {"SP4.mdb row 2: error [two-dots]", [&] { EditRow(2, &Row::FileName, "TTL74.V2.PART"); }},
        {"SP4.mdb row 2: error [name]", [&] { EditRow(2, &Row::FileName, "TTL74.PART "); }},
        {"SP4.mdb row 2: error [name]", [&] { EditRow(2, &Row::FileName, "LIB\\TTL74.PART"); }},
        {"SP4.mdb row 2: error [quote]", [&] { EditRow(2, &Row::FileName, "it's.PART"); }},
        {"SP4.mdb row 2: error [other-file]", [&] { EditRow(2, &Row::FileName, "TTL75.PART"); }},
        {"SP4.mdb row 2: warning [length]", [&] { EditRow(2, &Row::FilePath, "\\" + std::string(254, 'x')); }},
        {"SP4.mdb row 1: error [length]",
         [&] {
             Sql({std::string(256, 'x'), "Root", "7", date, part});
         }},
        {"SP4.mdb row 1: error [code-page]",
         [&] {
             Sql({"a\xEF\xBF\xBD.TXT", "Root", "7", date, part});
         }},
        {"SP4.mdb row 1: warning [code-page]",
         [&] {
             Sql({"TTL74.PART", "\\Ж", "7", date, part});
         }},
        {"SP4.mdb row 2: warning [size]", [&] { EditRow(2, &Row::FileSize, "8"); }},
        {"SP4.mdb row 2: error [archive-name]", [&] { EditRow(2, &Row::FileZipName, ""); }},
        {"SP4.mdb row 2: error [address]", [&] { EditRow(2, &Row::FileZipName, "50%20.zip"); }},
        {"SP4.mdb row 2: warning [address]",
         [&] {
             EditRow(2, &Row::FileZipName, "TTL 74.zip");
             std::filesystem::rename(Host("server/" + part), Host("server/TTL 74.zip"));
         }},
        {"SP4.mdb row 2: error [archive-missing]", [&] { std::filesystem::remove(Host("server/" + part)); }},
        {"SP4.mdb row 6: error [archive-case]",
         [&] {
             Edit("SP4.mdb", add({"X.TXT", "Root", "7", date, "sp4_lib_ttl74dottpart.zip"}));
         }},
        {"SP4.mdb row 6: error [archive-shared]",
         [&] {
             Edit("SP4.mdb", add({"X.TXT", "Root", "7", date, part}));
         }},
        {"SP4.mdb row 6: error [target]",
         [&] {
             Edit("SP4.mdb", add({"ttl74.part", "\\lib", "7", date, "B.zip"}));
         }},
        {"SP5.mdb row 1: error [target]", [&] { Edit("Update.mdb", [](auto& rows) { std::swap(rows[0], rows[1]); }); }},
        {"SP4.mdb row 6: error [folder-twice]",
         [&] {
             Edit("SP4.mdb", add({"\\Other", "NEWFOLDER", "", "", "SP4_Samples"}));
         }},
        {"SP4.mdb row 5: error [folder]", [&] { EditRow(5, &Row::FileName, "Samples"); }},
        {"SP4.mdb row 2: error [archive-damaged]", [&] { drive.Write("server/" + part, "<html>not here</html>"); }},
        {"SP4.mdb row 2: error [archive-damaged]",
         [&] {
             ZipEntry bad = Part();
             bad.checkSumError = 1;
             Archive({bad});
         }},
        {"SP4.mdb row 2: error [length]", [&] { drive.Write("server/" + part, ""); }},
        {"SP4.mdb row 2: error [two-members]",
         [&] {
             Archive({Part(), Part("sub/ttl74.part")});
         }},
        {"SP4.mdb row 2: warning [folder]",
         [&] {
             Archive({Part(), {.name = "sub/", .data = ""}});
         }},
        {"SP4.mdb row 2: warning [more-files]",
         [&] {
             Archive({Part(), Part("Y.TXT")});
         }},
        {"SP4.mdb row 2: warning [local-time]", [&] { Archive({{.name = "TTL74.PART", .data = "content"}}); }},
        {"SP4.mdb row 2: error [password]",
         [&] {
             ZipEntry locked = Part();
             locked.flags = 1;
             Archive({locked});
         }},
        {"SP4.mdb row 2: warning [link]",
         [&] {
             ZipEntry link = Part("Z");
             link.maker = 0x31E, link.attributes = 0120777u << 16;
             Archive({Part(), link});
         }},
        {"KlnUpdt.txt: error [note]", [&] { drive.Write("server/KlnUpdt.txt", "soon\r\n"); }},
    };
    for (const auto& [line, plant] : slips) {
        std::filesystem::remove_all(Host("server"));
        std::filesystem::copy(Host("clean"), Host("server"), std::filesystem::copy_options::recursive);
        plant();
        const bool costs = line.find(": error [") != std::string::npos;
        EXPECT_EQ(CheckServer(Host("server")), costs ? 1 : 0) << line << "\n" << said;
        EXPECT_NE(said.find(line), std::string::npos) << line << " is not in:\n" << said;
    }
}

TEST_F(CheckTest, LooksAtAServerAsWizardsDo) {
    const std::string part = "/k/SP4_LIB_TTL74DOTTPART.zip";
    test::HttpServer server;
    for (const std::string& name : drive.Names("server"))
        server.Answer("/k/" + name, {.body = drive.Read("server/" + name)});
    EXPECT_EQ(CheckServer(server.Url("/k/")), 0) << said;

    const std::string body = drive.Read("server/SP4_LIB_TTL74DOTTPART.zip");
    SetHttpTimeLimit(std::chrono::milliseconds(200));
    const std::pair<const char*, test::HttpAnswer> answers[] = {
        {"404 Not Found", {.status = 404, .reason = "Not Found"}},
        {"[no-length]", {.body = body, .declaredLength = ""}},
        {"[no-length]", {.body = body, .chunked = true}},
        {"[archive-missing]", {.body = body, .stallsBeforeHeaders = true}},
        {"stops sending after 10 bytes", {.body = body, .stallsAfter = 10}},
        {"comes with 10 bytes", {.body = body, .cutsAfter = 10}},
    };
    for (const auto& [expected, answer] : answers) {
        server.Answer(part, answer);
        EXPECT_EQ(CheckServer(server.Url("/k")), 1) << expected;
        EXPECT_NE(said.find(expected), std::string::npos) << expected << " is not in:\n" << said;
    }
    server.Answer("/k/Update.mdb", {.stallsBeforeHeaders = true});
    EXPECT_EQ(CheckServer(server.Url("/k")), 1);
    EXPECT_NE(said.find("[master-missing] the server does not answer"), std::string::npos) << said;
    SetHttpTimeLimit(std::chrono::seconds(60));
}

TEST_F(CheckTest, SaysWhatAnInstallationIsOffered) {
    drive.Write("KORLAN/SYS/TESSARY.INI",
                "[Tessary]\r\nLibDir=C:\\KORLAN\\MyLib\r\n[LIVEUPDATEFROMWEB]\r\nNumber=0\r\n");
    drive.Write("KORLAN/KLWCAP.DLL", "x");
    drive.Touch("KORLAN/KLWCAP.DLL", 2004, 3, 10, 7, 1, 12); // what SP4 brings, and SP5 has newer
    drive.Write("KORLAN/KDS_CML/OPAMP.SPC", "x");
    EXPECT_EQ(CheckServer(Host("server"), Host("KORLAN")), 0);
    EXPECT_NE(said.find("offers C:\\KORLAN\\KLWCAP.DLL  10-3-2004,7:30:12  instead of 10-3-2004,7:1:12\n"),
              std::string::npos)
        << said;
    EXPECT_NE(said.find("offers C:\\KORLAN\\MyLib\\TTL74.PART  10-3-2004,7:1:12  not there yet\n"), std::string::npos)
        << said;
    EXPECT_EQ(said.find("KDS_CML"), std::string::npos) << said; // a newer one is there
    drive.Write("KORLAN/SYS/TESSARY.INI", "[LIVEUPDATEFROMWEB]\r\nNumber=2\r\n1=SP5.MDB\r\n2=sp4.mdb\r\n");
    CheckServer(Host("server"), Host("KORLAN"));
    EXPECT_NE(said.find("No updates found"), std::string::npos) << said;
    for (const char* wrong : {"KORLAN/SYS", "nowhere"})
        EXPECT_THROW(CheckServer(Host("server"), Host(wrong)), RuntimeError) << wrong;
}

} // namespace
} // namespace korlan::publisher
