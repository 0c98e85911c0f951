#include "library/PartDatabase.h"

#include "library/SearchSequence.h"
#include "tests/support/Failing.h"
#include "tests/support/Installation.h"

#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <functional>

namespace korlan::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kFields = "Quad NAND|IX1|SIM1|Texas|IC|TTL|DIL|0|None|SYM0";

class PartDatabaseTest : public Installation {
protected:
    void WriteParts(const std::string& name, std::vector<suite::Element> parts) const {
        WriteLibrary("Korlan/LIB/" + name, suite::Kind::Part, std::move(parts));
    }
    std::vector<std::string> Names() const {
        return Index("SELECT Library || ':' || Name FROM PartFields ORDER BY rowid");
    }
    // A part in the suite's memory, taken from a library file.
    ElementHandle LoadedPart(const std::string& library, const std::string& name) const {
        const LibraryHandle handle = E_OpenLibrary(Suite.LibDir + "\\" + library, kPartLibraryType, 0);
        const ElementHandle part = D_Device();
        EXPECT_TRUE(E_OpenLibToRead(handle, name) && D_LoadDevice(part, handle));
        E_CloseLibrary(handle);
        return part;
    }
};

std::string WithCount(std::string library, std::uint32_t count) {
    for (std::size_t i = 0; i < 4; ++i) library[16 + i] = static_cast<char>(count >> (8 * i));
    return library;
}

} // namespace

TEST_F(PartDatabaseTest, TakesADescriptorApart) {
    const struct {
        const char* descriptor;
        const char* row; // package, full name, mixed-mode code, element code, model class
    } cases[] = {
        {"DIL14 Quad NAND|b|c|d|e|f|g|0|None|j", "DIL14|Quad NAND|0|NONE|-"},
        {"DIL14 |b|c|d|e|f|g|1|x|j", "DIL14||1|x|X"},
        {"a|b|c|d|e|f|g|0,0,0|None,None|j", "a\xE2\x82\xAC"
                                            "b\xE2\x82\xAC"
                                            "c\xE2\x82\xAC"
                                            "d\xE2\x82\xAC"
                                            "e\xE2\x82\xAC"
                                            "f\xE2\x82\xAC"
                                            "g\xE2\x82\xAC"
                                            "0,0,0\xE2\x82\xACNone,None\xE2\x82\xAC"
                                            "j|a|0|NONE|-"},
        {" DIL14 Quad|b|c|d|e|f|g|0|None|j", "|DIL14 Quad|0|NONE|-"},
        {"P a|b|c|d|e|f|g|||j", "P|a|0|NONE|-"},
        {"P a|b|c|d|e|f|g|0,0,0,0,0|None,None,None,None,None|j", "P|a|0|NONE|-"},
        {"P a|b|c|d|e|f|g|0,0,0,0,0,0|None,None,None,None,None,None|j",
         "P|a|0,0,0,0,0,0|None,None,None,None,None,None|N"},
        {"P a|b|c|d|e|f|g|00|none|j", "P|a|00|none|-"},
        {"P a|b|c|d|e|f|g|0, 0|none,NONE|j", "P|a|0, 0|none,NONE|-"},
        {"P a|b|c|d|e|f|g| 0| None |j", "P|a| 0| None |-"},
        {"P a|b|c|d|e|f|g|M1|resistor|j", "P|a|M1|resistor|R"},
        {"P a|b|c|d|e|f|g|M1|  \xFC"
         "ber|j",
         "P|a|M1|  \xC3\xBC"
         "ber|\xC3\x9C"},
        {"P a|b|c|d|e|f|g|M1|   |j|k|l", "P|a|M1|   |-"},
    };
    for (const auto& c : cases) {
        drive.Write(kIndex, "");
        MakeIndex();
        WriteParts("A.PART", {{"X", c.descriptor, ""}});
        UpdateLibDBAddFileElements("A.PART");
        EXPECT_THAT(Index("SELECT Package,FullName,MMSimCode,KdsElementCode,KdsModel FROM PartFields"),
                    ElementsAre(c.row))
            << c.descriptor;
    }
}

TEST_F(PartDatabaseTest, AFileReplacesItsRows) {
    MakeIndex();
    drive.Write(kIni, "[DEVLIBS]\r\n1=OTHER.PART\r\n");
    LoadSearchSequences();
    Index("INSERT INTO PartFields (Name, Library) VALUES ('keep', 'OTHER.PART')");
    WriteParts("Ttl.PART", {{"74LS00", "DIL14 " + kFields, ""}, {"74LS04", "SO14 " + kFields, ""}});
    UpdateLibDBAddFileElements("Ttl.PART");
    EXPECT_EQ(Index("SELECT *, typeof(SSQON), typeof(SSQNum) FROM PartFields WHERE Name = '74LS00'"),
              std::vector<std::string>{"74LS00|Ttl.PART|Quad NAND|IX1|SIM1|Texas|IC|TTL|DIL|0|NONE|SYM0|DIL14|-|1|2|"
                                       "integer|integer"});
    WriteParts("Ttl.PART", {{"74LS04", "SO14 " + kFields, ""}});
    UpdateLibDBDeleteFile("Ttl.PART");
    EXPECT_THAT(Names(), ElementsAre("OTHER.PART:keep"));
    UpdateLibDBAddFileElements("Ttl.PART");
    EXPECT_THAT(Names(), ElementsAre("OTHER.PART:keep", "Ttl.PART:74LS04"));
    EXPECT_EQ(SequenceOf(kPartKind).names[2], "TTL.PART");
}

TEST_F(PartDatabaseTest, BadLibraryFilesEndTheOperation) {
    const suite::LibraryFile good{suite::Kind::Part, {{"A", std::string("P ") + std::string(9, '\x80'), ""}}};
    const std::string bytes = suite::LibraryBytes(good);
    const struct {
        const char* what;
        std::string file;
        std::size_t rows;
    } cases[] = {
        {"good", bytes, 1},
        {"19 bytes", bytes.substr(0, 19), 0},
        {"empty", "", 0},
        {"no parts", suite::LibraryBytes({suite::Kind::Part, {}}), 0},
        {"count -1", WithCount(bytes, 0xFFFFFFFF), 0},
        {"count -2^31", WithCount(bytes, 0x80000000), 0},
        {"count 2^31-1", WithCount(bytes, 0x7FFFFFFF), 0},
        {"one part more than there is", WithCount(bytes, 2), 0},
        {"one part more, and the file could hold it", WithCount(bytes + std::string(40, '\0'), 2), 0},
        {"torn", bytes.substr(0, bytes.size() - 1), 0},
        {"a symbol library", suite::LibraryBytes({suite::Kind::Symbol, good.elements}), 0},
    };
    for (const auto& c : cases) {
        drive.Write(kIndex, "");
        MakeIndex();
        drive.Write("Korlan/LIB/BAD.PART", c.file);
        UpdateLibDBAddFileElements("BAD.PART");
        EXPECT_EQ(Names().size(), c.rows) << c.what;
    }
    UpdateLibDBAddFileElements("MISSING.PART");
    EXPECT_THAT(Names(), IsEmpty());
    WriteParts("SHORT.PART", {{"A", "P " + kFields, ""},
                              {"B", "P " + kFields, ""},
                              {"C", "P 1|2|3|4|5|6|7|8|9", ""},
                              {"D", "P " + kFields, ""}});
    UpdateLibDBAddFileElements("SHORT.PART");
    EXPECT_THAT(Names(), ElementsAre("SHORT.PART:A", "SHORT.PART:B")); // rows before the error stay
}

TEST_F(PartDatabaseTest, BadIndexFiles) {
    WriteParts("A.PART", {{"X", "P " + kFields, ""}});
    const std::string without = "CREATE TABLE PartFields (Name, Library, FullName)";
    const struct {
        const char* what;
        std::function<void()> prepare;
        bool deleteFails;
        std::vector<std::string> names; // afterwards, where the index can be read
    } cases[] = {
        {"no database", [&] { drive.Write(kIndex, "no database at all"); }, true, {}},
        {"empty", [&] { drive.Write(kIndex, ""); }, true, {}},
        {"another maker's, read only",
         [&] {
             std::filesystem::remove(drive.HostPathOf(kIndex));
             std::filesystem::copy_file(KLN_TEST_DATA "/jet/Parts.abd", drive.HostPathOf(kIndex));
         },
         true,
         {}},
        {"lacks columns", [&] { drive.Write(kIndex, ""), Index(without); }, false, {}},
        {"lacks the table", [&] { drive.Write(kIndex, ""), Index("CREATE TABLE Others (Name)"); }, true, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        c.prepare();
        const std::string before = drive.Read(kIndex);
        UpdateLibDBAddFileElements("A.PART");
        EXPECT_EQ(ErrorOf([] { UpdateLibDBDeleteFile("A.PART"); }) >= kErrDatabase, c.deleteFails);
        EXPECT_EQ(ErrorOf([] { UpdateLibDBDeleteFromFile("A.PART", "X"); }) >= kErrDatabase, c.deleteFails);
        EXPECT_EQ(drive.Read(kIndex), before);
    }
    std::filesystem::remove(drive.HostPathOf(kIndex));
    UpdateLibDBAddFileElements("A.PART");
    UpdateLibDB("A.PART", LoadedPart("A.PART", "X"));
    UpdateLibDBDeleteFile("A.PART");
    EXPECT_FALSE(drive.Exists(kIndex)) << "never made here";
}

TEST_F(PartDatabaseTest, AnIndexLockedByAnotherProcess) {
    MakeIndex();
    Index("INSERT INTO PartFields (Name, Library) VALUES ('old', 'A.PART')");
    WriteParts("A.PART", {{"X", "P " + kFields, ""}});
    int ready[2], done[2];
    ASSERT_TRUE(pipe(ready) == 0 && pipe(done) == 0);
    const pid_t child = fork();
    if (child == 0) {
        sqlite3* connection = nullptr;
        char byte = 0;
        sqlite3_open(drive.HostPathOf(kIndex).c_str(), &connection);
        sqlite3_exec(connection, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
        const bool told = write(ready[1], &byte, 1) == 1 && read(done[0], &byte, 1) == 1;
        _exit(told ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    UpdateLibDBAddFileElements("A.PART");
    EXPECT_GE(ErrorOf([] { UpdateLibDBDeleteFile("A.PART"); }), kErrDatabase);
    ASSERT_EQ(write(done[1], &byte, 1), 1);
    waitpid(child, nullptr, 0);
    EXPECT_THAT(Names(), ElementsAre("A.PART:old"));
}

TEST_F(PartDatabaseTest, AQuoteInANameIsNotDoubled) {
    MakeIndex();
    WriteParts("O'HARA.PART", {{"X", "P " + kFields, ""}});
    UpdateLibDBAddFileElements("O'HARA.PART");
    EXPECT_GE(ErrorOf([] { UpdateLibDBDeleteFile("O'HARA.PART"); }), kErrDatabase);
    UpdateLibDB("C:\\Korlan\\LIB\\O'HARA.PART", LoadedPart("O'HARA.PART", "X"));
    EXPECT_THAT(Names(), ElementsAre("O'HARA.PART:X"));

    // Names come from the server: one that ends the text early is still one statement, on this file alone.
    const std::string elsewhere = drive.HostPathOf("elsewhere.db");
    std::filesystem::copy_file(drive.HostPathOf(kIndex), elsewhere);
    const std::string before = drive.Read("elsewhere.db");
    for (const std::string& more :
         {"ATTACH \"" + elsewhere + "\" AS e; CREATE TABLE e.t(a)", std::string("DROP TABLE PartFields")}) {
        EXPECT_GE(ErrorOf([&] { UpdateLibDBDeleteFile("Z'; " + more + "; --.PART"); }), kErrDatabase) << more;
        EXPECT_THAT(Names(), ElementsAre("O'HARA.PART:X")) << more;
    }
    EXPECT_EQ(drive.Read("elsewhere.db"), before);
}

TEST_F(PartDatabaseTest, ASinglePartIsAddedThenRefreshed) {
    MakeIndex();
    drive.Write(kIni, "[DEVLIBS]\r\n1=Z.PART\r\n2=A.PART\r\n");
    LoadSearchSequences();
    WriteParts("A.PART", {{"X", "P one|IX1|SIM1|Texas|IC|TTL|DIL|0|resistor|SYM0", ""}, {"Y", "P " + kFields, ""}});
    UpdateLibDBAddFileElements("A.PART");
    UpdateLibDBDeleteFromFile("C:\\Korlan\\LIB\\A.PART", "Y");
    EXPECT_THAT(Names(), ElementsAre("A.PART:X"));
    WriteParts("A.PART", {{"X", " P two|IX1|SIM1|Texas|IC|TTL|DIL|0|None|SYM0 ", ""},
                          {"LONG", "P " + std::string(1022 - 2 - kFields.size(), 'n') + kFields, ""},
                          {"FIT", "P " + std::string(1021 - 2 - kFields.size(), 'n') + kFields, ""}});
    for (const char* part : {"X", "LONG", "FIT"}) UpdateLibDB("C:\\Korlan\\LIB\\A.PART", LoadedPart("A.PART", part));
    EXPECT_THAT(
        Index("SELECT Name, Library, Package, length(FullName), Symbol, KdsModel, SSQON, SSQNum FROM PartFields"),
        ElementsAre("X|A.PART|P|3|SYM0|R|1|1", // an unset model class stays as it was
                    "FIT|A.PART|P|981|SYM0|-|1|1"));
    UpdateLibDB("C:\\Korlan\\LIB\\A.PART", 4711); // no such part
    EXPECT_EQ(Names().size(), 2u);
}

// A process killed while its rows are on their way to the disk leaves none of them. The kill comes from the limit on
// the length of a file, so it strikes at a known place: in the first or the second half of the writing.
TEST_F(PartDatabaseTest, AllPartsOrNoneAfterACrash) {
    std::vector<suite::Element> parts;
    for (int i = 0; i < 10000; ++i)
        parts.push_back({"PART" + std::to_string(i), "P " + std::string(300, 'd') + kFields, ""});
    WriteParts("BIG.PART", parts);
    for (const rlim_t megabytes : {1, 3}) {
        drive.Write(kIndex, "");
        MakeIndex();
        Index("INSERT INTO PartFields (Name, Library) VALUES ('old', 'OTHER.PART')");
        const pid_t child = fork();
        if (child == 0) {
            const rlimit noCore{0, 0}, limit{megabytes << 20, megabytes << 20};
            setrlimit(RLIMIT_CORE, &noCore);
            setrlimit(RLIMIT_FSIZE, &limit);
            UpdateLibDBAddFileElements("BIG.PART");
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << "the limit was not met: " << status;
        EXPECT_THAT(Names(), ElementsAre("OTHER.PART:old")) << megabytes;
    }
    UpdateLibDBAddFileElements("BIG.PART");
    EXPECT_EQ(Names().size(), 10001u);
}

} // namespace korlan::test
