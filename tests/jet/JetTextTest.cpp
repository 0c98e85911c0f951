// Texts of a file: its code page, UTF-16 whole and squeezed, numbers at the ends of their ranges.
#include "platform/DatabaseHost.h"
#include "platform/jet/ValueText.h"
#include "tests/jet/TestDatabases.h"
#include "tests/support/Failing.h"

#include <gtest/gtest.h>

#include <array>

namespace korlan {
namespace {

using namespace std::literals;
using test::OpenBytes;
using test::ReadTestFile;

std::string Bytes(auto value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

TEST(JetText, DecodesEveryForm) {
    const auto expect = [](std::string_view stored, const char* expected) {
        std::string text;
        jet::AppendJet4Text(text, stored);
        EXPECT_EQ(text, expected);
    };
    expect("a\0\x3D\xD8\x00\xDE"sv, "a😀");
    expect("\x3D\xD8x\0"sv, "\uFFFDx"); // half a pair
    // Squeezed: 00 changes to wide and back.
    expect("\xFF\xFE\x41\xE4\x80"sv, "A\u00E4\u0080");
    expect("\xFF\xFE\x41\0\xAC\x20\0\x42"sv, "A€B");
}

TEST(JetText, DecodesCodePages) {
    const auto expect = [](unsigned codePage, std::string_view stored, const char* expected) {
        std::string text;
        jet::AppendCodePageText(text, stored, codePage, DecodeCodePage);
        EXPECT_EQ(text, expected) << codePage;
    };
    expect(1252, "\x80\xFC\x5C\x8D", "€ü\\\u008D");
    expect(1251, "\xCF\xE0\xEF\xEA\xE0", "Папка");
    expect(932, "\x83\x5C\x5C\x7E\xB1", "ソ\\~ｱ"); // 5C as a second byte and as a backslash
    expect(1255, "\xF9\xEC\xE5\xED", "שלום");      // the last one is held back for a point that may follow
    expect(1258, "\xE2\xFF\xD2\xE2", "âÿ̉â");
    // The header's code page lies under a mask of exclusive-or, so a change needs no unmasking.
    std::string bytes = ReadTestFile("jet3/types.mdb");
    bytes[0x3C] = static_cast<char>(bytes[0x3C] ^ (1252 & 0xFF) ^ (1251 & 0xFF));
    jet::JetTable table = OpenJetTable(OpenBytes(bytes, DecodeCodePage), "Files");
    EXPECT_EQ(table.Value(4, 1), "\\ЬЂ"); // the bytes of "\Ü€"
}

std::string Decimal(bool isNegative, std::array<std::uint32_t, 4> words) {
    return (isNegative ? '\x80' : '\0') + Bytes(words);
}

// "#" and a number for the error raised.
std::string TextOf(jet::ColumnType type, const std::string& stored, std::uint8_t scale = 0) {
    static const auto file = OpenBytes(ReadTestFile("jet3/norows.mdb"));
    jet::Column column{};
    column.type = type;
    column.scale = scale;
    jet::WorkBudget budget(file->Size());
    std::string text;
    const std::int32_t error = test::ErrorOf([&] { AppendValue(text, *file, column, jet::ByteView(stored), budget); });
    return error == 0 ? text : "#" + std::to_string(error);
}

TEST(JetValues, AreTextsAtTheEndsOfTheirRanges) {
    using jet::ColumnType;
    const auto largest = Decimal(true, {0x7FFFFFFF, ~0u, ~0u, ~0u});
    const auto memo = [](std::uint32_t length, const char* inPlace) {
        return Bytes(length) + Bytes(std::uint64_t{0}) + inPlace; // of page 0, where nothing in place
    };
    const auto expect = [](ColumnType type, const char* text, std::initializer_list<std::string> allStored,
                           std::uint8_t scale = 0) {
        for (const std::string& stored : allStored)
            EXPECT_EQ(TextOf(type, stored, scale), text) << "type " << static_cast<int>(type);
    };
    expect(ColumnType::Date, "29-12-1899,6:0:0", {Bytes(-1.25)});
    expect(ColumnType::Date, "1-1-1900,0:0:0", {Bytes(1.9999999)}); // rounds into the next day
    expect(ColumnType::Date, "#3343", {Bytes(2958465.9999999), Bytes(-657435.0)});
    expect(ColumnType::Decimal, "-170141183460469231731687303715884105727", {largest});
    expect(ColumnType::Decimal, "-17014118346.0469231731687303715884105727", {largest}, 28);
    expect(ColumnType::Decimal, "0.005", {Decimal(false, {0, 0, 0, 5})}, 3);
    expect(ColumnType::Double, "1000000000000000000000", {Bytes(1e21)});
    expect(ColumnType::Memo, "abc", {memo(0x80000003, "abc")});
    expect(ColumnType::Memo, "#3343", {memo(0x80000004, "abc"), memo(0xC0000000, ""), memo(0x3FFFFFFF, "")});
    expect(static_cast<ColumnType>(18), "#3259", {""});
}

} // namespace
} // namespace korlan
