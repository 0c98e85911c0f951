#include "library/PartDatabase.h"

#include "TestData.h"
#include "library/SearchSequence.h"
#include "platform/DatabaseError.h"
#include "tests/support/Failing.h"
#include "tests/support/Installation.h"

#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>

namespace korlan::test {

namespace {

using testing::ElementsAre;

constexpr const char* kNote = "KORLAN/LIB/.klnindex";
const std::string kFields = "Quad NAND|IX1|SIM1|Texas|IC|TTL|DIL|0|None|SYM0";

class PartDatabaseTest : public Installation {
protected:
    void WriteParts(const std::string& name, std::vector<suite::Element> parts) const {
        WriteLibrary("KORLAN/LIB/" + name, suite::Kind::Part, std::move(parts));
    }
    std::vector<std::string> Names() const {
        return Index("SELECT Library || ':' || Name FROM PartFields ORDER BY rowid");
    }
    // A part in the suite's memory, taken from a library file.
    ElementHandle LoadedPart(const std::string& library, const std::string& name) const {
        const LibraryHandle handle = E_OpenLibrary(Settings.LibDir + "\\" + library, kPartLibraryType, 0);
        const ElementHandle part = D_Device();
        EXPECT_TRUE(E_OpenLibToRead(handle, name) && D_LoadDevice(part, handle));
        E_CloseLibrary(handle);
        return part;
    }
};

} // namespace

TEST_F(PartDatabaseTest, TakesADescriptorApart) {
    // Package, full name, mixed-mode code, element code, model class.
    const std::pair<const char*, const char*> cases[] = {
        {"DIL14 Quad NAND|b|c|d|e|f|g|0|None|j", "DIL14|Quad NAND|0|NONE|-"},
        {"P a|b|c|d|e|f|g|||j", "P|a|0|NONE|-"},
        {"P a|b|c|d|e|f|g|0, 0|none,NONE|j", "P|a|0, 0|none,NONE|-"},
        {"P a|b|c|d|e|f|g|0,0,0,0,0|None,None,None,None,None|j", "P|a|0|NONE|-"},
        {"P a|b|c|d|e|f|g|0,0,0,0,0,0|None,None,None,None,None,None|j",
         "P|a|0,0,0,0,0,0|None,None,None,None,None,None|N"},
        {"P a|b|c|d|e|f|g|M1|  \374ber|j", "P|a|M1|  über|Ü"},
    };
    for (const auto& [descriptor, row] : cases) {
        drive.Write(kIndex, "");
        MakeIndex();
        WriteParts("A.PART", {{"X", descriptor, ""}});
        UpdateLibDBAddFileElements("A.PART");
        EXPECT_THAT(Index("SELECT Package,FullName,MMSimCode,KdsElementCode,KdsModel FROM PartFields"),
                    ElementsAre(row));
    }
}

TEST_F(PartDatabaseTest, AFileReplacesItsRows) {
    MakeIndex();
    drive.Write(kIni, "[DEVLIBS]\r\n1=OTHER.PART\r\n");
    LoadSearchSequences();
    Index("INSERT INTO PartFields (Name, Library) VALUES ('keep', 'OTHER.PART')");
    WriteParts("Ttl.PART", {{"74LS00", "DIL14 " + kFields, ""}, {"74LS04", "SO14 " + kFields, ""}});
    UpdateLibDBAddFileElements("Ttl.PART");
    EXPECT_THAT(Index("SELECT *, typeof(SSQON), typeof(SSQNum) FROM PartFields WHERE Name = '74LS00'"),
                ElementsAre("74LS00|Ttl.PART|Quad NAND|IX1|SIM1|Texas|IC|TTL|DIL|0|NONE|SYM0|DIL14|-|1|2|"
                            "integer|integer"));
    WriteParts("Ttl.PART", {{"74LS08", "DIL14 " + kFields, ""}});
    UpdateLibDBReplaceFile("Ttl.PART");
    EXPECT_THAT(Names(), ElementsAre("OTHER.PART:keep", "Ttl.PART:74LS08"));
    UpdateLibDBDeleteFile("Ttl.PART");
    EXPECT_THAT(Names(), ElementsAre("OTHER.PART:keep"));
    EXPECT_EQ(SequenceOf(kPartKind).names[2], "TTL.PART");
}

TEST_F(PartDatabaseTest, AReaderIsWaitedForAndCostsNoRow) {
    MakeIndex();
    Index("INSERT INTO PartFields (Name, Library) VALUES ('old', 'A.PART')");
    WriteParts("A.PART", {{"X", "P " + kFields, ""}});
    sqlite3* reader = nullptr;
    sqlite3_open(drive.HostPathOf(kIndex).c_str(), &reader);
    const auto run = [&](const char* sql) { sqlite3_exec(reader, sql, nullptr, nullptr, nullptr); };
    const std::chrono::milliseconds usual = std::exchange(indexPatience, std::chrono::milliseconds(0));
    run("BEGIN; SELECT * FROM PartFields");
    EXPECT_EQ(ErrorOf([] { UpdateLibDBReplaceFile("A.PART"); }), kErrDatabaseLocked);
    drive.Write(kNote, "A.PART");
    MakeUpForReplacement();
    EXPECT_THAT(Names(), ElementsAre("A.PART:old"));
    { const ReplacementNote later("B.PART"); }
    EXPECT_EQ(drive.Read(kNote), "A.PART");
    indexPatience = usual;
    Desktop().onDoEvents = [&] { run("COMMIT"); };
    MakeUpForReplacement();
    EXPECT_THAT(Names(), ElementsAre("A.PART:X"));
    EXPECT_FALSE(drive.Exists(kNote));
    sqlite3_close(reader);
}

TEST_F(PartDatabaseTest, AnIndexThatCannotBeWrittenCountsAsNone) {
    std::filesystem::copy_file(KLN_TEST_DATA "/jet/Parts.abd", drive.HostPathOf(kIndex));
    WriteParts("A.PART", {{"X", "P " + kFields, ""}});
    for (const auto& operation : {UpdateLibDBDeleteFile, UpdateLibDBAddFileElements,
                                  +[](const std::string& file) { UpdateLibDBDeleteFromFile(file, "X"); }})
        EXPECT_EQ(ErrorOf([&] { operation("A.PART"); }), 0);
    UpdateLibDB("A.PART", LoadedPart("A.PART", "X"));
    EXPECT_EQ(SequenceOf(kPartKind).names.UpperBound(), 0);
}

TEST_F(PartDatabaseTest, BadLibraryFilesEndTheOperation) {
    const suite::Element part{"A", "P " + std::string(9, '\x80'), ""};
    const std::string bytes = suite::LibraryBytes({suite::Kind::Part, {part}});
    MakeIndex();
    const auto counted = [&](const std::string& count) { return std::string(bytes).replace(16, 4, count); };
    for (const std::string& bad : {bytes.substr(0, 19), std::string(), suite::LibraryBytes({suite::Kind::Part, {}}),
                                   suite::LibraryBytes({suite::Kind::Symbol, {part}}), counted("\xFF\xFF\xFF\x7F"),
                                   counted("\xFF\xFF\xFF\xFF")}) { // memory for as many is never asked for
        drive.Write("KORLAN/LIB/BAD.PART", bad);
        UpdateLibDBAddFileElements("BAD.PART");
        EXPECT_THAT(Names(), testing::IsEmpty()) << testing::PrintToString(bad);
    }
    WriteParts("SHORT.PART", {{"A", "P " + kFields, ""}, {"B", "P 1|2|3|4|5|6|7|8|9", ""}, {"C", "P " + kFields, ""}});
    UpdateLibDBAddFileElements("SHORT.PART");
    drive.Write("KORLAN/LIB/GOOD.PART", bytes);
    UpdateLibDBAddFileElements("GOOD.PART");
    EXPECT_THAT(Names(), ElementsAre("SHORT.PART:A", "GOOD.PART:A")); // rows before the error stay
}

TEST_F(PartDatabaseTest, AQuoteInANameIsNotDoubled) {
    MakeIndex();
    WriteParts("O'HARA.PART", {{"X", "P " + kFields, ""}});
    UpdateLibDBAddFileElements("O'HARA.PART");
    EXPECT_GE(ErrorOf([] { UpdateLibDBDeleteFile("O'HARA.PART"); }), kErrDatabase);
    UpdateLibDB("C:\\KORLAN\\LIB\\O'HARA.PART", LoadedPart("O'HARA.PART", "X"));
    EXPECT_THAT(Names(), ElementsAre("O'HARA.PART:X"));

    // Names come from the server: one that ends the text early is still one statement, on this file alone.
    EXPECT_GE(ErrorOf([] { UpdateLibDBDeleteFile("Z'; DROP TABLE PartFields; --.PART"); }), kErrDatabase);
    EXPECT_THAT(Names(), ElementsAre("O'HARA.PART:X"));
}

TEST_F(PartDatabaseTest, ASinglePartIsAddedThenRefreshed) {
    MakeIndex();
    drive.Write(kIni, "[DEVLIBS]\r\n1=Z.PART\r\n2=A.PART\r\n");
    LoadSearchSequences();
    WriteParts("A.PART", {{"X", "P one|IX1|SIM1|Texas|IC|TTL|DIL|0|resistor|SYM0", ""}, {"Y", "P " + kFields, ""}});
    UpdateLibDBAddFileElements("A.PART");
    UpdateLibDBDeleteFromFile("C:\\KORLAN\\LIB\\A.PART", "Y");
    EXPECT_THAT(Names(), ElementsAre("A.PART:X"));
    WriteParts("A.PART", {{"X", " P two|IX1|SIM1|Texas|IC|TTL|DIL|0|None|SYM0 ", ""},
                          {"LONG", "P " + std::string(1022 - 2 - kFields.size(), 'n') + kFields, ""},
                          {"FIT", "P " + std::string(1021 - 2 - kFields.size(), 'n') + kFields, ""}});
    for (const char* part : {"X", "LONG", "FIT"}) UpdateLibDB("C:\\KORLAN\\LIB\\A.PART", LoadedPart("A.PART", part));
    EXPECT_THAT(
        Index("SELECT Name, Library, Package, length(FullName), Symbol, KdsModel, SSQON, SSQNum FROM PartFields"),
        ElementsAre("X|A.PART|P|3|SYM0|R|1|1", // an unset model class stays as it was
                    "FIT|A.PART|P|981|SYM0|-|1|1"));
}

// A process killed while its rows are on their way to the disk leaves none of them, and the next start adds them. The
// kill comes from the limit on the length of a file, so it strikes at a known place: in the first or the second half of
// the writing.
TEST_F(PartDatabaseTest, AllPartsOrNoneAfterACrash) {
    std::vector<suite::Element> parts;
    for (int i = 0; i < 3000; ++i)
        parts.push_back({"PART" + std::to_string(i), "P " + std::string(1000, 'd') + kFields, ""});
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
            const ReplacementNote note("BIG.PART");
            UpdateLibDBReplaceFile("BIG.PART");
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << "the limit was not met: " << status;
        EXPECT_THAT(Names(), ElementsAre("OTHER.PART:old")) << megabytes;
        MakeUpForReplacement();
        EXPECT_EQ(Names().size(), 3001u);
        drive.Write(kNote, "OTHER.PART"); // its library is not there, for the process ended right before it came
        MakeUpForReplacement();
        EXPECT_EQ(Names().size(), 3001u);
        EXPECT_FALSE(drive.Exists(kNote));
    }
}

} // namespace korlan::test
