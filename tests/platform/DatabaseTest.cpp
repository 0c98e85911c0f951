// Databases as the program sees them: the kinds of file, what reading and writing give, and every error number.
#include "platform/Database.h"
#include "TestData.h"

#include "platform/DatabaseError.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"
#ifndef _WIN32
#include "tests/support/SqliteFile.h"
#endif

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using test::ErrorOf;
using test::kOnWindows;
using test::TempDrive;
using testing::ElementsAre;

class Databases : public testing::Test {
protected:
    Databases() {
#ifdef _WIN32 // as the test's own engine keeps it
        drive_.Write("Parts.abd", "Name\tLibrary\tSSQNum\tPrice\n74LS00\tTTL.PART\t1\t0.1\n"
                                  "40001\tCMOS.PART\t%N\t1e6\n74LS04\tttl.part\t-2147483648\t-2.0\n");
#else
        test::RunSql(drive_.HostPathOf("Parts.abd"),
                     "CREATE TABLE PartFields (Name TEXT, Library TEXT, SSQNum INTEGER, Price REAL, Icon BLOB);"
                     "INSERT INTO PartFields VALUES ('74LS00', 'TTL.PART', 1, 0.1, x'0aFF');"
                     "INSERT INTO PartFields VALUES ('40001', 'CMOS.PART', NULL, 1e6, NULL);"
                     "INSERT INTO PartFields VALUES ('74LS04', 'ttl.part', -2147483648, -2.0, NULL);");
#endif
    }
    void CopyTestFile(const std::string& name, const std::string& as) const {
        std::filesystem::copy_file(KLN_TEST_DATA "/jet/" + name, drive_.HostPathOf(as));
    }
    static std::unique_ptr<Database> Open(const std::string& name = "Parts.abd",
                                          const std::string& connect = ";pwd=kqz") {
        return OpenDatabase(TempDrive::Path(name), false, false, connect);
    }
    static std::vector<std::string> ColumnOf(Database& database, const std::string& tableOrSql,
                                             const std::string& column = "Name") {
        std::vector<std::string> values;
        const auto rows = database.OpenRecordset(tableOrSql);
        for (; !rows->Eof(); rows->MoveNext()) values.push_back(rows->Text(column));
        return values;
    }
    static void Add(Recordset& rows, const std::string& name, const std::string& library) {
        rows.AddNew();
        rows.SetText("Name", name);
        rows.SetText("LIBRARY", library);
        rows.SetNumber("SSQNum", 7);
        rows.Update();
    }

    TempDrive drive_;
};

TEST_F(Databases, GiveEveryValueAsTextAndCompareWithoutCase) {
    const auto database = Open("parts.ABD");
    EXPECT_THAT(ColumnOf(*database, "PARTFIELDS", "ssqnum"), ElementsAre("1", "", "-2147483648"));
    EXPECT_THAT(ColumnOf(*database, "select * from [PartFields];", "Price"), ElementsAre("0.1", "1000000", "-2"));
    if (!kOnWindows) { // the tests' engine has no such column
        EXPECT_THAT(ColumnOf(*database, "PartFields", "Icon"), ElementsAre("0aff", "", ""));
    }
    EXPECT_THAT(ColumnOf(*database, "SELECT * FROM PartFields WHERE (Name = '74ls04') AND (Library = 'TTL.part')"),
                ElementsAre("74LS04"));
    database->Execute("DELETE * from PartFields WHERE Library = 'TTL.PART'");
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), ElementsAre("40001"));
}

TEST_F(Databases, KeepWhatIsAddedAndEdited) {
    const auto database = Open();
    const auto rows = database->OpenRecordset("SELECT * FROM PartFields WHERE (Name = '40001')");
    rows->Edit();
    rows->SetText("library", "ÄÖ\"'.PART");
    EXPECT_EQ(rows->Text("Library"), "CMOS.PART") << "reading is of the stored row";
    rows->Update();
    Add(*rows, "new", "X.PART");
    rows->Close();
    Add(*database->OpenRecordset("PartFields"), "part", "Y.PART"); // not closed by the caller: it stays
    const auto other = Open();
    EXPECT_THAT(ColumnOf(*other, "PartFields", "Library"),
                ElementsAre("TTL.PART", "ÄÖ\"'.PART", "ttl.part", "X.PART", "Y.PART"));
}

TEST_F(Databases, RaiseTheNumbersOfTheEngine) {
    drive_.Write("text.mdb", "this is no database, and never was one, whatever its name says");
    drive_.Write("empty.mdb", "");
    drive_.Write("broken.mdb", drive_.Read("Parts.abd").replace(kOnWindows ? 0 : 100, 200, 200, '\x55'));
    drive_.MakeFolders("folder.mdb");
    const auto database = Open();
    const auto rows = database->OpenRecordset("PartFields");
    const auto expect = [](std::int32_t error, std::initializer_list<std::function<void()>> calls) {
        for (const auto& call : calls) EXPECT_EQ(ErrorOf(call), error);
    };
    const auto query = [&](const char* sql) { return [&, sql] { database->OpenRecordset(sql); }; };
    const auto remove = [&](const char* sql) { return [&, sql] { database->Execute(sql); }; };
    EXPECT_EQ(ErrorOf([] { Open("missing.mdb"); }), kErrDatabaseMissing);
    EXPECT_EQ(ErrorOf([] { Open("folder.mdb"); }), kErrCannotOpenDatabase);
    for (const char* file : {"text.mdb", "empty.mdb", "broken.mdb"})
        EXPECT_EQ(ErrorOf([&] { Open(file); }), kErrUnrecognizedFormat) << file;
    expect(kErrNoSuchTable, {query("Files"), query("SELECT * FROM Files"), remove("DELETE * FROM Files")});
    expect(kErrMissingName, {query("SELECT * FROM PartFields WHERE x = 1")});
    expect(kErrSqlSyntax, {remove("DELETE * from PartFields WHERE Library = 'O'HARA.PART'")});
    expect(kErrNoSuchColumn, {[&] { rows->Text("FileName"); }, [&] { rows->AddNew(), rows->SetText("FileName", ""); }});
    rows->MoveNext(); // drops the addition
    expect(kErrUpdateWithoutEdit, {[&] { rows->SetText("Name", ""); }, [&] { rows->Update(); }});
    for (int i = 0; i < 2; ++i) rows->MoveNext();
    expect(kErrNoCurrentRecord, {[&] { rows->MoveNext(); }, [&] { rows->Text("Name"); }, [&] { rows->Edit(); }});
    EXPECT_FALSE(drive_.Exists("missing.mdb"));
}

TEST_F(Databases, EndTransactionsAsAskedAndWaitForNobodyLong) {
    const auto database = Open(), other = Open();
    const auto rows = database->OpenRecordset("PartFields");
    Add(*rows, "before", "X.PART");
    database->BeginTrans(); // what was gathered before it stays
    Add(*rows, "lost", "X.PART");
    database->Execute("DELETE * FROM PartFields WHERE Name = '40001'");
    if (!kOnWindows) { // the tests' engine locks nothing
        EXPECT_EQ(ErrorOf([&] { other->Execute("DELETE * FROM PartFields"); }), kErrDatabaseLocked);
    }
    database->Rollback();
    EXPECT_THAT(ColumnOf(*other, "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "before"));
    database->BeginTrans();
    Add(*rows, "kept", "X.PART");
    database->CommitTrans();
    EXPECT_THAT(ColumnOf(*other, "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "before", "kept"));
    EXPECT_EQ(ErrorOf([&] { database->Rollback(); }), kErrNoTransaction);
}

TEST_F(Databases, RefuseToWriteWhatIsReadOnly) {
    CopyTestFile("jet3/SP1.mdb", "SP1.mdb");
    drive_.SetMode("SP1.mdb", 0644);
    const auto expectReadOnly = [](std::unique_ptr<Database> database, const char* table, const char* column) {
        const auto rows = database->OpenRecordset(table);
        EXPECT_FALSE(rows->Text(column).empty());
        const auto change = [&](auto begin) { begin(), rows->SetText(column, "x"), rows->Update(); };
        EXPECT_EQ(ErrorOf([&] { change([&] { rows->AddNew(); }); }), kErrReadOnlyDatabase);
        EXPECT_EQ(ErrorOf([&] { database->Execute("DELETE * from PartFields"); }), kErrReadOnlyDatabase);
    };
    if (!kOnWindows) expectReadOnly(OpenDatabase(TempDrive::Path("Parts.abd"), false, true, ""), "PartFields", "Name");
    expectReadOnly(Open("SP1.mdb", ""), "SELECT * FROM Files", "FileName");
}

#ifdef _WIN32
TEST_F(Databases, WithoutAnEngineTheIndexAloneCannotBeOpened) {
    CopyTestFile("types.mdb", "types.mdb");
    const std::string components = std::filesystem::path(KLN_TEST_COMPONENTS).make_preferred().string();
    ASSERT_EQ(std::system(("regsvr32 /u /s " + components).c_str()), 0);
    EXPECT_EQ(ErrorOf([] { Open(); }), kErrCannotOpenDatabase);
    EXPECT_EQ(ErrorOf([] { Open("types.mdb", ""); }), 0);
    ASSERT_EQ(std::system(("regsvr32 /s " + components).c_str()), 0);
}
#else // SQLite is on Linux alone

// A catalogue comes from the network: it may hold rows, and nothing that runs or grows while they are read.
TEST_F(Databases, AnSqliteFileGivesRowsAndNothingElse) {
    const std::pair<const char*, std::int32_t> files[] = {
        {"CREATE VIEW Files AS WITH RECURSIVE n(FileName) AS (SELECT 1 UNION ALL SELECT FileName + 1 FROM n)"
         " SELECT FileName FROM n",
         kErrOperationNotSupported},
        {"CREATE TABLE Files (FileName AS (hex(zeroblob(100000000))), b); INSERT INTO Files VALUES (1)",
         kErrUnrecognizedFormat},
        {"CREATE TABLE Files (b, FileName AS (hex(zeroblob(500000)))); INSERT INTO Files VALUES (1),(2),(3)",
         kErrUnrecognizedFormat},
    };
    for (const auto& [sql, error] : files) {
        std::filesystem::remove(drive_.HostPathOf("Update.mdb"));
        test::RunSql(drive_.HostPathOf("Update.mdb"), sql);
        const auto database = Open("Update.mdb", "");
        EXPECT_EQ(ErrorOf([&] { ColumnOf(*database, "SELECT * FROM Files", "FileName"); }), error) << sql;
    }
    test::RunSql(drive_.HostPathOf("Parts.abd"), "INSERT INTO PartFields (Name) WITH RECURSIVE n(i) AS (SELECT 1 UNION"
                                                 " ALL SELECT i + 1 FROM n LIMIT 1000) SELECT i FROM n");
    EXPECT_EQ(ErrorOf([] {
                  Open()->OpenRecordset("SELECT * FROM PartFields a, PartFields b, PartFields c "
                                        "WHERE a.Name || b.Name || c.Name = 'none'");
              }),
              kErrUnrecognizedFormat)
        << "more steps than such a file is worth";
}
#endif

TEST_F(Databases, ReadJetFilesAndAskForTheirPassword) {
    CopyTestFile("types.mdb", "types.mdb");
    const auto database = Open("TYPES.MDB", kOnWindows ? "" : ";pwd=anything");
    const auto rows = database->OpenRecordset("SELECT * FROM files");
    EXPECT_EQ(rows->Text("FILEDATE"), "10-3-2003,7:1:1");
    EXPECT_EQ(rows->Text("Active"), "True");
    EXPECT_THAT(ColumnOf(*database, "Files", "FileSize")[5], "") << "NULL is empty text";
    EXPECT_EQ(ErrorOf([&] { rows->Text("Nothing"); }), kErrNoSuchColumn);
    EXPECT_EQ(ErrorOf([&] { database->OpenRecordset("Filez"); }), kErrNoSuchTable);
    EXPECT_EQ(ErrorOf([&] { database->OpenRecordset("SELECT * FROM Files WHERE 1=1"); }), kErrOperationNotSupported);
    CopyTestFile("Parts.abd", "Parts4.abd");
    EXPECT_EQ(ErrorOf([&] { Open("Parts4.abd", ""); }), kErrBadPassword);
    if (kOnWindows) return; // what is opened with a password is the engine's
    CopyTestFile("jet3/Parts.abd", "Parts3.abd");
    CopyTestFile("jet3/password.mdb", "password.mdb");
    const auto expect = [](std::int32_t error, const char* file, std::initializer_list<const char*> connects) {
        for (const char* connect : connects)
            EXPECT_EQ(ErrorOf([&] { Open(file, connect); }), error) << file << ' ' << connect;
    };
    expect(0, "Parts4.abd", {";pwd=kqz", "MS Access;PWD=kqz;"});
    expect(kErrBadPassword, "Parts4.abd", {";pwd=KQZ", "kqz"});
    expect(0, "Parts3.abd", {";pwd=kqz"});
    expect(kErrBadPassword, "Parts3.abd", {";pwd=kq", ";pwd="});
    expect(0, "password.mdb", {";pwd=Secret#1"});
    EXPECT_EQ(ColumnOf(*Open("Parts4.abd"), "PartFields"), ColumnOf(*Open("Parts3.abd"), "PartFields"));
}

} // namespace
} // namespace korlan
