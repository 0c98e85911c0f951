// Fields of single rows, sound and damaged byte by byte.
#include "tests/jet/TestDatabases.h"

#include <gtest/gtest.h>

namespace korlan {
namespace {

using namespace std::literals;
using test::OpenBytes;
using test::ReadTestFile;

// Two text columns in the variable part and a fixed number as the last column.
jet::TableDefinition TextTable() {
    jet::TableDefinition table{};
    table.highestColumn = 3;
    table.variableColumns = 2;
    for (std::uint16_t i = 0; i <= 2; ++i) {
        jet::Column column{};
        column.type = i == 2 ? jet::ColumnType::Long : jet::ColumnType::Text;
        column.number = column.variableIndex = i;
        column.isFixed = i == 2;
        column.size = 4;
        table.columns.push_back(column);
    }
    return table;
}

// The fields end to end with "|" between, "NULL" for those without a value, the error's reason if there is one.
std::string FieldsOf(const std::string& databaseForLayout, std::string_view row) {
    const auto file = OpenBytes(ReadTestFile(databaseForLayout));
    const jet::TableDefinition table = TextTable();
    std::string fields;
    try {
        for (const jet::Column& column : table.columns) {
            const auto field = FieldOfRow(file->PageLayout(), table, jet::ByteView(row), column);
            fields.append(field ? field->Chars() : "NULL").append("|");
        }
        return fields;
    } catch (const RuntimeError& error) {
        return error.Description().substr(error.Description().find(": ") + 2);
    }
}

TEST(JetRows, AreCutIntoFields) {
    constexpr const char *kNarrow = "jet3/SP1.mdb", *kWide = "SP1.mdb";
    constexpr const char *kEndsElsewhere = "a row whose fields do not end where its offsets start",
                         *kFalling = "a row with falling offsets", *kPastTheEnd = "an offset past the end",
                         *kNoRoom = "a row without room for its offsets";
    const auto expect = [](const char* layout, std::string_view row, const char* fields) {
        EXPECT_EQ(FieldsOf(layout, row), fields) << testing::PrintToString(row);
    };
    expect(kNarrow, "\2ABCDEF\7\4\1\2\2"sv, "NULL|DEF|NULL|");
    expect(kNarrow, "\2DEF\4\1\1\2\3"sv, "|DEF|NULL|");
    expect(kNarrow, "\1ABC\4\1\1\1"sv, "ABC|NULL|NULL|"); // a column added later
    expect(kNarrow, "\2ABC\4\1\1\3"sv, "ABC|NULL|NULL|"); // its place added later
    expect(kNarrow, "\3WXYZA\6\5\5\2\5"sv, "|NULL|WXYZ|");
    expect(kNarrow, "\2ABCDEF\6\4\1\2\3"sv, kEndsElsewhere);
    expect(kNarrow, "\2ABCDEF\7\1\4\2\3"sv, kFalling);
    expect(kNarrow, "\2ABCDEF\7\4\0\2\3"sv, kFalling); // a field in the count
    expect(kNarrow, "\2ABCDEF\7\7\4\1\3\3"sv, "a row with too many variable fields");
    expect(kNarrow, "\2\1\2\3"sv, kNoRoom);
    expect(kNarrow, "\2\3"sv, "a row without variable fields");
    expect(kNarrow, "\2"sv, "a row without room for its mask");
    expect(kNarrow, "\3A\4"sv, kPastTheEnd); // a number in the mask
    expect(kWide, "\2\0ABCDEF\7\0\5\0\2\0\2\0\3"sv, kEndsElsewhere);
    expect(kWide, "\2\0ABCDEF\x8\0\xFF\x7F\2\0\2\0\3"sv, kFalling);

    // In long narrow rows a jump table says which offsets pass 256, 512 ...; entries that only the row's end made
    // necessary are filler of any value.
    const auto longRow = [&](std::size_t first, std::size_t second, std::string_view trailer) {
        const std::string a(first, 'a'), b(second, 'b'),
            fields = FieldsOf(kNarrow, "\2" + a + b + std::string(trailer));
        return fields == a + "|" + b + "|NULL|" ? "well" : fields;
    };
    EXPECT_EQ(longRow(300, 300, "\x59\x2D\1\2\1\2\3"sv), "well"); // ends at 301, 601
    EXPECT_EQ(longRow(100, 400, "\xF5\x65\1\3\2\3"sv), kEndsElsewhere);
    EXPECT_EQ(longRow(100, 408, "\xFD\x65\1\0\2\2\3"sv), "well"); // filler 0: of 516 bytes
    EXPECT_EQ(longRow(100, 408, "\xFD\x65\1\xFF\2\2\3"sv), "well");
}

} // namespace
} // namespace korlan
