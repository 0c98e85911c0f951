// Fields of single rows and pieces of long values, sound and damaged byte by byte.
#include "platform/jet/LongValue.h"
#include "tests/jet/TestDatabases.h"

#include <gmock/gmock.h>
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
            const auto field = FieldOfRow(file->Form(), table, jet::ByteView(row), column);
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
    expect(kNarrow, ""sv, kPastTheEnd);
    expect(kWide, "\2\0ABCDEF\7\0\5\0\2\0\2\0\3"sv, kEndsElsewhere);
    expect(kWide, "\2\0ABCDEF\x8\0\xFF\x7F\2\0\2\0\3"sv, kFalling);
    expect(kWide, "\2\0\2\0\xFF\xFF\3"sv, kNoRoom);
    expect(kWide, "\2"sv, kPastTheEnd); // half a count

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

// A piece without data that names itself never ends for a reader that only counts bytes.
TEST(JetLongValues, EndWhateverTheirChainNames) {
    std::string bytes = ReadTestFile("texts.mdb");
    std::uint32_t page = 1;
    while (jet::ByteView(bytes).U32(page * 4096 + 4) != jet::kLongValueOwner) ++page;
    const std::uint32_t pointer = page << 8;
    const std::size_t rows = page * 4096 + 12;
    const auto numberBytes = [](std::uint32_t number) { return std::string(reinterpret_cast<char*>(&number), 4); };
    const auto read = [&](std::uint32_t length, std::string_view piece) {
        bytes.replace(rows, 4, std::string("\1\0", 2) + static_cast<char>(4096 - piece.size()) + '\x0F');
        bytes.replace((page + 1) * 4096 - piece.size(), piece.size(), piece);
        const auto file = OpenBytes(bytes);
        jet::WorkBudget budget(file->Size());
        const std::string head = numberBytes(length) + numberBytes(pointer) + numberBytes(0);
        std::string storage;
        try {
            return std::string(LongValueBytes(*file, jet::ByteView(head), storage, budget).Chars());
        } catch (const RuntimeError& error) {
            return error.Description();
        }
    };
    const std::string self = numberBytes(pointer);
    const std::string end(4, '\0'), refused = "Unrecognized database format: a long value of another length";
    EXPECT_EQ(read(3, end + "abc"), "abc");
    EXPECT_EQ(read(4, end + "abc"), refused);
    EXPECT_EQ(read(2, end + "abc"), refused);
    EXPECT_EQ(read(9, self + "abc"), refused) << "a ring";
    EXPECT_EQ(read(9, self), refused) << "a ring without data";
    EXPECT_EQ(read(0x40000000 | 7, end + "abc"), end + "abc") << "one row, no pointer in front";
    EXPECT_EQ(read(0, self), "");
    EXPECT_EQ(read(100'000'000 & 0x3FFFFFFF, self + "abc"),
              "Unrecognized database format: values larger than the file can hold");
}

} // namespace
} // namespace korlan
