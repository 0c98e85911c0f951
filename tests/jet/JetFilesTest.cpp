// Every test database against its expected rows and columns; tables are found without regard to case.
#include "tests/jet/TestDatabases.h"
#include "tests/support/Failing.h"

#include <gtest/gtest.h>

#include <map>

namespace korlan {
namespace {

using namespace test;
using jet::ColumnType;

class JetFiles : public testing::TestWithParam<std::string> {};

std::string MainTableOf(const std::string& file) {
    return file.ends_with("Parts.abd") ? "partfields" : file == "jet3/notable.mdb" ? "filez" : "FILES";
}

// "2003-03-10 07:01:01" -> "10-3-2003,7:1:1"
Cell DateOfProgram(const Cell& date) {
    if (!date) return date;
    int part[6] = {};
    for (std::size_t i = 0, at = 0; i < 6; at = date->find_first_of("- :", at) + 1)
        part[i++] = std::stoi(date->substr(at));
    std::ostringstream text;
    text << part[2] << '-' << part[1] << '-' << part[0] << ',' << part[3] << ':' << part[4] << ':' << part[5];
    return text.str();
}

TEST_P(JetFiles, HasExactlyItsRows) {
    const std::string& file = GetParam();
    jet::JetTable table = OpenJetTable(OpenBytes(ReadTestFile(file)), MainTableOf(file));
    std::vector<Row> expected = ReadTsv(file + ".tsv");
    Row names;
    for (const jet::Column& column : table.Columns()) names.push_back(column.name);
    ASSERT_EQ(names, expected.front());
    expected.erase(expected.begin());
    for (std::size_t column = 0; column < names.size(); ++column) {
        if (table.Columns()[column].type != ColumnType::Date) continue;
        for (Row& row : expected) row[column] = DateOfProgram(row[column]);
    }
    const std::vector<Row> rows = ReadAll(table);
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i) ASSERT_EQ(rows[i], expected[i]) << "row " << i;
}

INSTANTIATE_TEST_SUITE_P(All, JetFiles,
                         testing::Values("Update.mdb", "SP1.mdb", "SP2.mdb", "SP3.mdb", "types.mdb", "nulls.mdb",
                                         "order.mdb", "deleted.mdb", "rows5000.mdb", "texts.mdb", "fmt2007.accdb",
                                         "Parts.abd", "jet3/Update.mdb", "jet3/SP1.mdb", "jet3/SP2.mdb", "jet3/SP3.mdb",
                                         "jet3/Parts.abd", "jet3/types.mdb", "jet3/rowlengths.mdb", "jet3/deleted.mdb",
                                         "jet3/tablecase.mdb", "jet3/notable.mdb", "jet3/missingcol.mdb",
                                         "jet3/norows.mdb", "jet3/password.mdb"));

using ColumnFacts = std::tuple<std::string, ColumnType, int>; // name, type, declared size

TEST(JetSchemas, AreAsListed) {
    using enum ColumnType;
    std::map<std::string, ColumnType> types = {
        {"BOOLEAN", YesNo},  {"BYTE", Byte},      {"INT", Integer},   {"LONG", Long},
        {"MONEY", Currency}, {"FLOAT", Single},   {"DOUBLE", Double}, {"SHORT_DATE_TIME", Date},
        {"BINARY", Binary},  {"TEXT", Text},      {"OLE", Ole},       {"MEMO", Memo},
        {"GUID", Guid},      {"NUMERIC", Decimal}};
    for (const std::string folder : {"", "jet3/"}) {
        std::map<std::pair<std::string, std::string>, std::vector<ColumnFacts>> expected;
        std::vector<Row> listed = ReadTsv(folder + "SCHEMA.tsv");
        for (std::size_t i = 1; i < listed.size(); ++i) {
            const Row& line = listed[i];
            expected[{*line[0], *line[1]}].emplace_back(*line[3], types.at(*line[4]), std::stoi(*line[5]));
        }
        ASSERT_GE(expected.size(), 12U);
        for (const auto& [key, columns] : expected) {
            const auto file = OpenBytes(ReadTestFile(folder + key.first));
            std::vector<ColumnFacts> found;
            const jet::JetTable table = OpenJetTable(file, key.second);
            for (const jet::Column& column : table.Columns()) {
                const bool isWide = column.type == Text && !file->IsJet3();
                found.emplace_back(column.name, column.type, column.type == YesNo ? 1 : column.size / (isWide ? 2 : 1));
            }
            EXPECT_EQ(found, columns) << key.first << ' ' << key.second;
        }
    }
}

TEST(JetTables, AreFoundByTheirWholeNameOnly) {
    const auto open = [](const char* file, const char* table) {
        return ErrorOf([&] { OpenJetTable(OpenBytes(ReadTestFile(file)), table); });
    };
    EXPECT_EQ(open("jet3/notable.mdb", "Files"), kErrNoSuchTable);
    for (const char* table : {"File", "", "Tables"}) // the last one of another type
        EXPECT_EQ(open("SP1.mdb", table), kErrNoSuchTable) << table;
    EXPECT_EQ(open("order.mdb", "FILES2"), 0);
}

} // namespace
} // namespace korlan
