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

// A table of text columns, each in the variable part, and a fixed number as the last column.
jet::TableDefinition TextTable(std::uint16_t columns) {
    jet::TableDefinition table{};
    table.highestColumn = static_cast<std::uint16_t>(columns + 1);
    table.variableColumns = columns;
    for (std::uint16_t i = 0; i <= columns; ++i) {
        jet::Column column{};
        column.type = i == columns ? jet::ColumnType::Long : jet::ColumnType::Text;
        column.number = i;
        column.variableIndex = i;
        column.isFixed = i == columns;
        column.size = 4;
        table.columns.push_back(column);
    }
    return table;
}

// The fields end to end with "|" between, "NULL" for those without a value, the error's reason if there is one.
std::string FieldsOf(const std::string& databaseForLayout, std::string_view row, std::uint16_t columns) {
    const auto file = OpenBytes(ReadTestFile(databaseForLayout));
    const jet::TableDefinition table = TextTable(columns);
    std::string fields;
    try {
        for (const jet::Column& column : table.columns) {
            const auto field = FieldOfRow(file->Form(), table, jet::ByteView(row), column);
            fields.append(field ? field->Chars() : "NULL").append("|");
        }
    } catch (const RuntimeError& error) {
        return error.Description().substr(error.Description().find(": ") + 2);
    }
    return fields;
}

TEST(JetRows, AreCutIntoFields) {
    struct Case {
        const char* what;
        const char* layout;
        std::string_view row;
        std::uint16_t columns;
        const char* fields;
    };
    constexpr const char *kNarrow = "jet3/SP1.mdb", *kWide = "SP1.mdb";
    const Case cases[] = {
        {"narrow", kNarrow, "\2ABCDEF\7\4\1\2\3"sv, 2, "ABC|DEF|NULL|"},
        {"narrow, NULL first", kNarrow, "\2ABCDEF\7\4\1\2\2"sv, 2, "NULL|DEF|NULL|"},
        {"narrow, empty", kNarrow, "\2DEF\4\1\1\2\3"sv, 2, "|DEF|NULL|"},
        {"narrow, column added later", kNarrow, "\1ABC\4\1\1\1"sv, 2, "ABC|NULL|NULL|"},
        {"narrow, its place added later", kNarrow, "\2ABC\4\1\1\3"sv, 2, "ABC|NULL|NULL|"},
        {"narrow, with a number", kNarrow, "\3WXYZA\6\5\5\2\5"sv, 2, "|NULL|WXYZ|"},
        {"narrow, end too low", kNarrow, "\2ABCDEF\6\4\1\2\3"sv, 2,
         "a row whose fields do not end where its offsets start"},
        {"narrow, falling", kNarrow, "\2ABCDEF\7\1\4\2\3"sv, 2, "a row with falling offsets"},
        {"narrow, field in the count", kNarrow, "\2ABCDEF\7\4\0\2\3"sv, 2, "a row with falling offsets"},
        {"narrow, too many fields", kNarrow, "\2ABCDEF\7\7\4\1\3\3"sv, 2, "a row with too many variable fields"},
        {"narrow, no room", kNarrow, "\2\1\2\3"sv, 2, "a row without room for its offsets"},
        {"narrow, mask only", kNarrow, "\2\3"sv, 2, "a row without variable fields"},
        {"narrow, no mask", kNarrow, "\2"sv, 2, "a row without room for its mask"},
        {"narrow, number in the mask", kNarrow, "\3A\4"sv, 2, "an offset past the end"},
        {"nothing", kNarrow, ""sv, 2, "an offset past the end"},
        {"wide", kWide, "\2\0ABCDEF\x8\0\5\0\2\0\2\0\3"sv, 2, "ABC|DEF|NULL|"},
        {"wide, end too low", kWide, "\2\0ABCDEF\7\0\5\0\2\0\2\0\3"sv, 2,
         "a row whose fields do not end where its offsets start"},
        {"wide, past the row", kWide, "\2\0ABCDEF\x8\0\xFF\x7F\2\0\2\0\3"sv, 2, "a row with falling offsets"},
        {"wide, no room", kWide, "\2\0\2\0\xFF\xFF\3"sv, 2, "a row without room for its offsets"},
        {"wide, half a count", kWide, "\2"sv, 2, "an offset past the end"},
    };
    for (const Case& c : cases) EXPECT_EQ(FieldsOf(c.layout, c.row, c.columns), c.fields) << c.what;
}

// In long narrow rows a jump table says which offsets pass 256, 512 ...; entries that only the row's end made
// necessary are filler of any value.
TEST(JetRows, AreCutBeyond256Bytes) {
    const auto row = [](std::size_t first, std::size_t second, std::string_view trailer) {
        return "\2" + std::string(first, 'a') + std::string(second, 'b') + std::string(trailer);
    };
    const auto fields = [](std::size_t first, std::size_t second) {
        return std::string(first, 'a') + "|" + std::string(second, 'b') + "|NULL|";
    };
    constexpr const char* kNarrow = "jet3/SP1.mdb";
    EXPECT_EQ(FieldsOf(kNarrow, row(300, 300, "\x59\x2D\1\2\1\2\3"sv), 2), fields(300, 300)); // ends at 301, 601
    EXPECT_EQ(FieldsOf(kNarrow, row(100, 400, "\xF5\x65\1\2\2\3"sv), 2), fields(100, 400));   // ends at 101, 501
    EXPECT_EQ(FieldsOf(kNarrow, row(100, 400, "\xF5\x65\1\3\2\3"sv), 2),
              "a row whose fields do not end where its offsets start");
    EXPECT_EQ(FieldsOf(kNarrow, row(100, 408, "\xFD\x65\1\0\2\2\3"sv), 2), fields(100, 408)); // filler 0: of 516 bytes
    EXPECT_EQ(FieldsOf(kNarrow, row(100, 408, "\xFD\x65\1\xFF\2\2\3"sv), 2), fields(100, 408));
}

// A piece without data that names itself never ends for a reader that only counts bytes.
TEST(JetLongValues, EndWhateverTheirChainNames) {
    std::string bytes = ReadTestFile("texts.mdb");
    std::uint32_t page = 1;
    while (jet::ByteView(bytes).U32(page * 4096 + 4) != jet::kLongValueOwner) ++page;
    const std::uint32_t pointer = page << 8;
    const std::size_t rows = page * 4096 + 12;
    const auto read = [&](std::uint32_t length, std::string_view piece) {
        bytes.replace(rows, 4, std::string("\1\0", 2) + static_cast<char>(4096 - piece.size()) + '\x0F');
        bytes.replace((page + 1) * 4096 - piece.size(), piece.size(), piece);
        const auto file = OpenBytes(bytes);
        jet::WorkBudget budget(file->Size());
        std::string head, storage;
        for (const std::uint32_t number : {length, pointer, 0U})
            for (unsigned shift = 0; shift < 32; shift += 8) head += static_cast<char>(number >> shift);
        try {
            return std::string(LongValueBytes(*file, jet::ByteView(head), storage, budget).Chars());
        } catch (const RuntimeError& error) {
            return error.Description();
        }
    };
    std::string self;
    for (unsigned shift = 0; shift < 32; shift += 8) self += static_cast<char>(pointer >> shift);
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
