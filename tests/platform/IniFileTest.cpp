#include "platform/IniFile.h"
#include "TestData.h"

#include "platform/TextEncoding.h"
#include "tests/support/Failing.h"
#include "tests/support/Table.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

namespace korlan {
namespace {

using test::SplitAt;
using test::TableRow;
using test::TempDrive;
using test::Unescape;
using testing::ElementsAre;

const std::string kFile = "C:\\TEST.INI";

// An argument of a table; its bytes are of the code page.
std::string Argument(const std::string& field) {
    return TextFromCodePage(Unescape(field));
}

std::vector<TableRow> UsableRows(const std::string& table) {
    std::vector<TableRow> rows = test::ReadTable(std::string(KLN_TEST_DATA) + "/ini/" + table);
    std::erase_if(rows, [](const TableRow& row) { return row.at("basis") == "doubt"; });
    return rows;
}

// What the host's own functions give where they differ from Windows, which the column "wine" keeps.
std::string Expected(const TableRow& row, const char* column) {
    return test::kOnWindows && row.at("wine") != "=" ? row.at("wine") : row.at(column);
}

void PutFile(const TempDrive& drive, const std::string& field) {
    std::filesystem::remove(drive.HostPathOf("TEST.INI"));
    if (field != "<ABSENT>") drive.Write("TEST.INI", Unescape(field));
}

// Sections, keys and values of a file in their order, without the blanks that reading drops.
std::string ContentOf(const std::string& bytes) {
    const std::regex section(" *\\[ *(\\w+) *\\].*"), pair(" *(\\w+) *= *(.*?) *");
    std::string content;
    for (const std::string& line : SplitAt(std::regex_replace(bytes, std::regex("[\r\n]+"), "\n"), "\n"))
        if (std::smatch parts; std::regex_match(line, parts, section))
            content += "[" + parts.str(1) + "]\n";
        else if (std::regex_match(line, parts, pair))
            content += parts.str(1) + "=" + parts.str(2) + "\n";
    return content;
}

TEST(ProfileReading, AnswersEveryRecordedCase) {
    const TempDrive drive;
    const std::vector<TableRow> rows = UsableRows("profile-cases.tsv");
    ASSERT_EQ(rows.size(), 176u);
    for (const TableRow& row : rows) {
        PutFile(drive, row.at("file"));
        const auto section = Argument(row.at("section")), key = Argument(row.at("key")),
                   fallback = Argument(row.at("default"));
        const std::string expected = Unescape(Expected(row, "expected"));
        const bool utf8 = row.at("file") != "<ABSENT>" && IsValidUtf8(drive.Read("TEST.INI"));
        EXPECT_EQ(ReadProfileValue(section, key, std::stoul(row.at("size")), kFile).value_or(fallback),
                  utf8 ? expected : TextFromCodePage(expected))
            << row.at("id") << ": " << row.at("file") << " section " << row.at("section") << " key " << row.at("key");
    }
}

TEST(ProfileWriting, LeavesWhatEveryRecordedCaseLeaves) {
    const TempDrive drive;
    const std::vector<TableRow> rows = UsableRows("profile-writes.tsv");
    ASSERT_EQ(rows.size(), 76u);
    for (const TableRow& row : rows) {
        SCOPED_TRACE(row.at("id") + ": " + row.at("before"));
        PutFile(drive, row.at("before"));
        const auto sections = SplitAt(row.at("section"), ";;"), keys = SplitAt(row.at("key"), ";;");
        const auto values = SplitAt(row.at("value"), ";;"), returned = SplitAt(row.at("returned"), ";;");
        for (std::size_t i = 0; i < sections.size(); ++i) {
            const auto section = Argument(sections[i]), key = Argument(keys[i]), value = Argument(values[i]);
            EXPECT_EQ(WriteProfileValue(section, key, value, kFile) == 0, returned.at(i) == "1");
        }
        EXPECT_EQ(drive.Exists("TEST.INI"), Expected(row, "after") != "<ABSENT>");
        if (!drive.Exists("TEST.INI")) continue;
        const std::string after = drive.Read("TEST.INI"), expected = Unescape(Expected(row, "after"));
        if (row.at("compare") == "bytes")
            EXPECT_EQ(after, expected);
        else
            EXPECT_EQ(ContentOf(after), ContentOf(expected));
    }
}

TEST(ProfileWriting, ChangesOneLineAndKeepsTheFormOfTheText) {
    const TempDrive drive;
    const auto expect = [&](const char* before, const char* key, const char* value, const char* after) {
        drive.Write("TEST.INI", before);
        EXPECT_EQ(WriteProfileValue("S", key, value, kFile), 0);
        // The test host's own functions write every line end anew.
        const std::string left = drive.Read("TEST.INI");
        const auto shown = [](const std::string& text) {
            return test::kOnWindows ? std::regex_replace(text, std::regex("\r"), "") : text;
        };
        EXPECT_EQ(shown(left), shown(after)) << before;
    };
    if (!test::kOnWindows) // the test host's own functions write the other lines anew
        expect("\n[S] ;h\n  k  =  v  \n\n;c\nj=1", "K", "w", "\n[S] ;h\n  k  =w\n\n;c\nj=1");
    expect("[S]\nk=\xE9\n", "j", "ü€", "[S]\nk=\xE9\nj=\xFC\x80\r\n");   // code page
    expect("[S]\nk=\xE9\n", "j", "aЖ", "[S]\nk=\xE9\nj=a?\r\n");         // not in it
    expect("[S]\nk=\xC3\xA9\n", "j", "üЖ", "[S]\nk=\xC3\xA9\nj=üЖ\r\n"); // UTF-8
    expect("[S]\nk=e\n", "j", "ü", "[S]\nk=e\nj=\xFC\r\n");              // ASCII takes the code page,
    expect("[S]\nk=e\n", "j", "Ж", "[S]\nk=e\nj=Ж\r\n");                 // not where it lacks a letter
    expect("[S]\nk=e\n", "j", "Ã©", "[S]\nk=e\nj=Ã©\r\n");               // nor where it would read as UTF-8
}

TEST(ProfileFiles, FailuresHaveTheSystemsNumbers) {
    const TempDrive drive;
    drive.Write("locked.ini", "[S]\nk=v\n");
    drive.SetMode("locked.ini", 0444);
    drive.MakeFolders("folder");
    drive.MakeDevice("device.ini");
    drive.Write("held.ini", "[S]\nnone=v\n");
    const test::HeldFile held(drive.HostFile("held.ini"));
    const std::pair<std::int32_t, std::vector<std::string>> rows[] = {
        {5, {"C:\\locked.ini", "C:\\folder", "", "C:\\"}},
        {3, {"C:\\none\\x.ini", "C:\\locked.ini\\x", std::string("C:\\a\0b", 6)}},
        {2, {"Q:\\x.ini"}},
        {32, test::RowsOn<std::string>(test::kOnWindows, {"C:\\held.ini"})},
        {5, test::RowsOn<std::string>(!test::kOnWindows, {"C:\\device.ini"})},
        {3, test::RowsOn<std::string>(!test::kOnWindows, {"bare.ini"})}, // no Windows folder
    };
    for (const auto& [error, files] : rows)
        for (const std::string& file : files) {
            EXPECT_EQ(WriteProfileValue("S", "k", "new", file), error) << file;
            EXPECT_FALSE(ReadProfileValue("S", "none", 1024, file)) << file;
        }
    drive.Write("Ж/x.ini", "[S]\n"); // outside the code page: on Windows by its short name
    EXPECT_EQ(WriteProfileValue("S", "k", "new", "C:\\Ж\\x.ini"), 0);
    EXPECT_EQ(ReadProfileValue("S", "k", 1024, "C:\\Ж\\x.ini"), "new");
    EXPECT_THAT(DescribeSystemError(5), testing::AnyOf("Access is denied.", "Access denied.")); // the host's own words
    EXPECT_EQ(drive.Read("locked.ini"), "[S]\nk=v\n");
}

} // namespace
} // namespace korlan
