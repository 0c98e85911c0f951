// Databases as the program sees them: the kinds of file, what reading and writing give, and every error number.
#include "platform/Database.h"

#include "platform/DatabaseError.h"
#include "tests/support/Failing.h"
#include "tests/support/TempFolder.h"

#include <sqlite3.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korlan {
namespace {

using test::ErrorOf;
using test::TempDrive;
using testing::ElementsAre;
using testing::IsEmpty;

// Another program with the same file open.
class OtherProgram {
public:
    explicit OtherProgram(const std::string& hostPath) { sqlite3_open(hostPath.c_str(), &connection_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;
    ~OtherProgram() { sqlite3_close(connection_); }
    void Run(const char* sql) {
        if (sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection_));
    }

private:
    sqlite3* connection_ = nullptr;
};

class Databases : public testing::Test {
protected:
    Databases() {
        OtherProgram(drive_.HostPathOf("Parts.abd"))
            .Run("CREATE TABLE PartFields (Name TEXT, Library TEXT, SSQNum INTEGER, Price REAL, Icon BLOB);"
                 "CREATE INDEX ByLibrary ON PartFields (Library);"
                 "INSERT INTO PartFields VALUES ('74LS00', 'TTL.PART', 1, 0.1, x'0aFF');"
                 "INSERT INTO PartFields VALUES ('40001', 'CMOS.PART', NULL, 1e6, NULL);"
                 "INSERT INTO PartFields VALUES ('74LS04', 'ttl.part', -2147483648, -2.0, NULL);");
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
    const auto database = Open("parts.ABD", "");
    EXPECT_THAT(ColumnOf(*database, "PARTFIELDS", "ssqnum"), ElementsAre("1", "", "-2147483648"));
    EXPECT_THAT(ColumnOf(*database, "select * from [PartFields];", "Price"), ElementsAre("0.1", "1000000", "-2"));
    EXPECT_THAT(ColumnOf(*database, "PartFields", "Icon"), ElementsAre("0aff", "", ""));
    EXPECT_THAT(ColumnOf(*database, "SELECT Count(*) AS n FROM PartFields", "N"), ElementsAre("3"));
    // Texts compare without case.
    EXPECT_THAT(ColumnOf(*database, "SELECT * FROM PartFields WHERE (Name = '74ls04') AND (Library = 'TTL.part')"),
                ElementsAre("74LS04"));
    EXPECT_THAT(ColumnOf(*database, "SELECT * FROM PartFields WHERE Library = 'O''HARA.PART'"), IsEmpty());
    database->Execute("DELETE * from PartFields WHERE Library = 'TTL.PART'");
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), ElementsAre("40001"));
    database->Execute("delete  *  FROM PartFields");
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), IsEmpty());
}

TEST_F(Databases, KeepWhatIsAddedAndEdited) {
    const auto database = Open();
    const auto rows = database->OpenRecordset("SELECT * FROM PartFields WHERE (Name = '40001')");
    rows->Edit();
    rows->SetText("Library", "O'HARA.PART");
    rows->SetText("library", "ÄÖ\"'.PART"); // the last one counts
    EXPECT_EQ(rows->Text("Library"), "CMOS.PART") << "reading is of the stored row";
    rows->Update();
    EXPECT_EQ(rows->Text("Library"), "ÄÖ\"'.PART");
    rows->Edit(); // begun and dropped
    rows->SetText("Library", "dropped");
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    Add(*rows, "new", "X.PART");
    rows->Close();
    Add(*database->OpenRecordset("PartFields"), "part", "Y.PART"); // not closed by the caller: it stays
    const auto other = Open();
    EXPECT_THAT(ColumnOf(*other, "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "new", "part"));
    EXPECT_THAT(ColumnOf(*other, "PartFields", "Library"),
                ElementsAre("TTL.PART", "ÄÖ\"'.PART", "ttl.part", "X.PART", "Y.PART"));
    EXPECT_THAT(ColumnOf(*other, "SELECT * FROM PartFields WHERE Name = 'new'", "SSQNum"), ElementsAre("7"));
}

TEST_F(Databases, EndTransactionsAsAsked) {
    const auto database = Open();
    const auto rows = database->OpenRecordset("PartFields");
    Add(*rows, "before", "X.PART");
    database->BeginTrans(); // what was gathered before it stays
    Add(*rows, "lost", "X.PART");
    database->Execute("DELETE * FROM PartFields WHERE Name = '40001'");
    database->Rollback();
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "before"));
    database->BeginTrans();
    Add(*rows, "kept", "X.PART");
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "before"));
    database->CommitTrans();
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "before", "kept"));
    EXPECT_EQ(ErrorOf([&] { database->Rollback(); }), kErrNoTransaction);
}

TEST_F(Databases, RaiseTheNumbersOfTheEngine) {
    drive_.Write("text.mdb", "this is no database, and never was one, whatever its name says");
    drive_.Write("short.mdb", "SQL");
    drive_.Write("empty.mdb", "");
    drive_.Write("broken.mdb", drive_.Read("Parts.abd").replace(100, 200, 200, '\x55'));
    drive_.MakeFolders("folder.mdb");
    const auto database = Open();
    const auto rows = database->OpenRecordset("PartFields");
    const auto joined = database->OpenRecordset("SELECT count(*) FROM PartFields");
    const auto expect = [](std::int32_t error, std::initializer_list<std::function<void()>> calls) {
        int number = 0;
        for (const auto& call : calls) EXPECT_EQ(ErrorOf(call), error) << "call " << ++number;
    };
    const auto query = [&](const char* sql) { return [&, sql] { database->OpenRecordset(sql); }; };
    const auto remove = [&](const char* sql) { return [&, sql] { database->Execute(sql); }; };
    for (const char* file : {"missing.mdb", "nowhere\\x.mdb"})
        EXPECT_EQ(ErrorOf([&] { Open(file); }), kErrDatabaseMissing) << file;
    EXPECT_EQ(ErrorOf([] { Open("folder.mdb"); }), kErrCannotOpenDatabase);
    for (const char* file : {"text.mdb", "short.mdb", "empty.mdb", "broken.mdb"})
        EXPECT_EQ(ErrorOf([&] { Open(file); }), kErrUnrecognizedFormat) << file;
    expect(kErrNoSuchTable, {query("Files"), query("SELECT * FROM Files"), remove("DELETE * FROM Files")});
    expect(kErrMissingName, {query("SELECT * FROM PartFields WHERE x = 1")});
    expect(kErrSqlSyntax, {remove("DELETE * from PartFields WHERE Library = 'O'HARA.PART'")});
    expect(kErrNoSuchColumn, {[&] { rows->Text("FileName"); }, [&] { rows->AddNew(), rows->SetText("FileName", ""); }});
    rows->MoveNext(); // drops the addition
    expect(kErrUpdateWithoutEdit, {[&] { rows->SetText("Name", ""); }, [&] { rows->Update(); }});
    expect(kErrReadOnlyDatabase, {[&] { joined->AddNew(); }});
    for (int i = 0; i < 2; ++i) rows->MoveNext();
    expect(kErrNoCurrentRecord, {[&] { rows->MoveNext(); }, [&] { rows->Text("Name"); }, [&] { rows->Edit(); }});
    EXPECT_FALSE(drive_.Exists("missing.mdb"));
}

TEST_F(Databases, WaitForNobodyLong) {
    OtherProgram other(drive_.HostPathOf("Parts.abd"));
    const auto database = Open();
    const auto rows = database->OpenRecordset("SELECT * FROM PartFields WHERE Name = 'none'");
    other.Run("BEGIN IMMEDIATE");
    EXPECT_EQ(ErrorOf([&] { database->Execute("DELETE * FROM PartFields"); }), kErrDatabaseLocked);
    EXPECT_EQ(ErrorOf([&] { Add(*rows, "x", "y"); }), kErrDatabaseLocked);
    other.Run("ROLLBACK");
    EXPECT_EQ(ErrorOf([&] { Add(*rows, "later", "y"); }), 0) << "a lock that is gone does no harm";
    rows->Close();
    other.Run("BEGIN EXCLUSIVE");
    EXPECT_EQ(ErrorOf([] { Open(); }), kErrDatabaseLocked);
    other.Run("ROLLBACK");

    // A reader elsewhere lets changes be gathered but not written.
    auto held = Open();
    auto heldRows = held->OpenRecordset("SELECT * FROM PartFields WHERE Name = 'none'");
    other.Run("BEGIN; SELECT * FROM PartFields");
    Add(*heldRows, "held up", "y");
    EXPECT_EQ(ErrorOf([&] { heldRows->Close(); }), kErrDatabaseLocked);
    other.Run("COMMIT");
    heldRows.reset();
    held.reset();
    EXPECT_THAT(ColumnOf(*Open(), "PartFields"), ElementsAre("74LS00", "40001", "74LS04", "later", "held up"));
    const auto exclusive = OpenDatabase(TempDrive::Path("Parts.abd"), true, false, "");
    EXPECT_THROW(other.Run("SELECT * FROM PartFields"), std::runtime_error);
}

TEST_F(Databases, RefuseToWriteWhatIsReadOnly) {
    CopyTestFile("jet3/SP1.mdb", "SP1.mdb");
    drive_.SetMode("SP1.mdb", 0644);
    drive_.Write("marked.abd", drive_.Read("Parts.abd"));
    drive_.SetMode("marked.abd", 0444);
    const std::string before = drive_.Read("SP1.mdb");
    const auto expectReadOnly = [](std::unique_ptr<Database> database, const char* table, const char* column) {
        const auto rows = database->OpenRecordset(table);
        EXPECT_FALSE(rows->Text(column).empty());
        const auto change = [&](auto begin) { begin(), rows->SetText(column, "x"), rows->Update(); };
        EXPECT_EQ(ErrorOf([&] { change([&] { rows->AddNew(); }); }), kErrReadOnlyDatabase);
        EXPECT_EQ(ErrorOf([&] { change([&] { rows->Edit(); }); }), kErrReadOnlyDatabase);
        EXPECT_EQ(ErrorOf([&] { database->Execute("DELETE * from PartFields"); }), kErrReadOnlyDatabase);
    };
    expectReadOnly(OpenDatabase(TempDrive::Path("Parts.abd"), false, true, ""), "PartFields", "Name");
    expectReadOnly(Open("marked.abd"), "PartFields", "Name");
    expectReadOnly(Open("SP1.mdb"), "SELECT * FROM Files", "FileName");
    EXPECT_EQ(drive_.Read("SP1.mdb"), before);
}

TEST_F(Databases, ReadJetFiles) {
    CopyTestFile("types.mdb", "types.mdb");
    CopyTestFile("jet3/missingcol.mdb", "missingcol.mdb");
    const auto database = Open("TYPES.MDB", "");
    const auto rows = database->OpenRecordset("SELECT * FROM files");
    EXPECT_EQ(rows->Text("FILEDATE"), "10-3-2003,7:1:1");
    EXPECT_EQ(rows->Text("Active"), "True");
    EXPECT_THAT(ColumnOf(*database, "Files", "FileSize")[5], "") << "NULL is empty text";
    EXPECT_EQ(ErrorOf([&] { rows->Text("Nothing"); }), kErrNoSuchColumn);
    EXPECT_EQ(ErrorOf([&] { database->OpenRecordset("Filez"); }), kErrNoSuchTable);
    EXPECT_EQ(ErrorOf([&] { database->OpenRecordset("SELECT * FROM Files WHERE 1=1"); }), kErrOperationNotSupported);
    EXPECT_EQ(ErrorOf([&] { Open("missingcol.mdb")->OpenRecordset("Files")->Text("Filedate"); }), kErrNoSuchColumn);
    std::filesystem::resize_file(drive_.HostPathOf("types.mdb"), 17 << 20);
    EXPECT_EQ(ErrorOf([&] { Open("types.mdb"); }), kErrUnrecognizedFormat) << "too large";
}

TEST_F(Databases, AskForThePasswordOfJetFiles) {
    CopyTestFile("Parts.abd", "Parts4.abd");
    CopyTestFile("jet3/Parts.abd", "Parts3.abd");
    CopyTestFile("jet3/password.mdb", "password.mdb");
    CopyTestFile("SP1.mdb", "open.mdb");
    const auto expect = [](std::int32_t error, const char* file, std::initializer_list<const char*> connects) {
        for (const char* connect : connects)
            EXPECT_EQ(ErrorOf([&] { Open(file, connect); }), error) << file << ' ' << connect;
    };
    expect(0, "Parts4.abd", {";pwd=kqz", "MS Access;PWD=kqz;"});
    expect(kErrBadPassword, "Parts4.abd", {"", ";pwd=KQZ", "kqz"});
    expect(0, "Parts3.abd", {";pwd=kqz"});
    expect(kErrBadPassword, "Parts3.abd", {";pwd=kq", ";pwd="});
    expect(0, "password.mdb", {";pwd=Secret#1"});
    expect(kErrBadPassword, "password.mdb", {""});
    expect(0, "open.mdb", {";pwd=anything"});
    EXPECT_EQ(ColumnOf(*Open("Parts4.abd"), "PartFields"), ColumnOf(*Open("Parts3.abd"), "PartFields"));
}

} // namespace
} // namespace korlan
