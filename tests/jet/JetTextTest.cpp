// Texts of a file: its code page, UTF-16 whole and squeezed, encoded pages, numbers at the ends of their ranges.
#include "platform/jet/Rc4.h"
#include "platform/jet/ValueText.h"
#include "platform/linux/CodePages.h"
#include "tests/jet/TestDatabases.h"
#include "tests/support/Failing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace korlan {
namespace {

using namespace std::literals;
using test::OpenBytes;
using test::ReadTestFile;

std::string Bytes(auto value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

TEST(JetText, DecodesEveryForm) {
    const struct {
        const char* what;
        std::string_view stored, text;
    } cases[] = {
        {"beyond the first plane", "a\0\x3D\xD8\x00\xDE"sv, "a😀"},
        {"lone high surrogate", "\x3D\xD8x\0"sv, "\uFFFDx"},
        {"lone low surrogate", "\x00\xDEx\0"sv, "\uFFFDx"},
        {"high surrogate at the end", "x\0\x3D\xD8"sv, "x\uFFFD"},
        {"odd last byte", "x\0y"sv, "x\uFFFD"},
        {"squeezed", "\xFF\xFE\x41\xE4\x80"sv, "A\u00E4\u0080"},
        {"squeezed, wide and back", "\xFF\xFE\x41\0\xAC\x20\0\x42"sv, "A€B"},
        {"squeezed, wide to the end", "\xFF\xFE\x41\0\x3D\xD8\x00\xDE"sv, "A\uFFFD\u00DE"}, // 00 changes back first
        {"squeezed, odd wide byte", "\xFF\xFE\x41\0\xAC"sv, "A\uFFFD"},
    };
    for (const auto& c : cases) {
        std::string text;
        jet::AppendJet4Text(text, c.stored);
        EXPECT_EQ(text, c.text) << c.what;
    }
}

TEST(JetText, DecodesCodePages) {
    const struct {
        unsigned codePage;
        std::string_view stored, text;
    } cases[] = {
        {1252, "\x80\xFC\x5C\x8D", "€ü\\\u008D"},
        {1251, "\xCF\xE0\xEF\xEA\xE0", "Папка"},
        {932, "\x83\x5C\x5C\x7E\xB1", "ソ\\~ｱ"}, // 5C as a second byte and as a backslash
        {932, "A\x83", "A\uFFFD"},               // a character cut off
        {65535, "\xFC", "ü"},                    // unknown: 1252
    };
    for (const auto& c : cases) {
        std::string text;
        jet::AppendCodePageText(text, c.stored, c.codePage, DecodeCodePage);
        EXPECT_EQ(text, c.text) << c.codePage;
    }
    // The header's code page lies under a mask of exclusive-or, so a change needs no unmasking.
    std::string bytes = ReadTestFile("jet3/types.mdb");
    bytes[0x3C] = static_cast<char>(bytes[0x3C] ^ (1252 & 0xFF) ^ (1251 & 0xFF));
    jet::JetTable table = OpenJetTable(OpenBytes(bytes, DecodeCodePage), "Files");
    EXPECT_EQ(table.Value(4, 1), "\\ЬЂ"); // the bytes of "\Ü€"
}

TEST(JetPages, AreDecodedByTheirKey) {
    for (const char* name : {"jet3/types.mdb", "types.mdb"}) {
        const std::string sound = ReadTestFile(name);
        const std::size_t pageSize = sound[0x14] == 0 ? 2048 : 4096;
        constexpr std::uint32_t kKey = 0x8D5A10F3;
        std::string encoded = sound;
        for (unsigned i = 0; i < 4; ++i) encoded[0x3E + i] = static_cast<char>(encoded[0x3E + i] ^ Bytes(kKey)[i]);
        for (std::uint32_t page = 1; page < sound.size() / pageSize; ++page)
            jet::ApplyRc4(Bytes(kKey ^ page), &encoded[page * pageSize], pageSize);
        ASSERT_NE(encoded.substr(2 * pageSize), sound.substr(2 * pageSize));
        jet::JetTable read = OpenJetTable(OpenBytes(encoded), "Files"),
                      expected = OpenJetTable(OpenBytes(sound), "Files");
        EXPECT_EQ(test::ReadAll(read), test::ReadAll(expected)) << name;
    }
    std::string vector = "Plaintext"; // a published example of the cipher
    jet::ApplyRc4("Key", vector.data(), vector.size());
    EXPECT_EQ(vector, "\xBB\xF3\x16\xE8\xD9\x40\xAF\x0A\xD3"sv);
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
    using Limits = std::numeric_limits<double>;
    using jet::ColumnType;
    const auto largest = Decimal(true, {0x7FFFFFFF, ~0u, ~0u, ~0u});
    const auto memo = [](std::uint32_t length, const char* inPlace) {
        return Bytes(length) + Bytes(std::uint64_t{0}) + inPlace; // of page 0, where nothing in place
    };
    const struct {
        ColumnType type;
        std::string stored, text;
        std::uint8_t scale = 0;
    } cases[] = {
        {ColumnType::Date, Bytes(-1.25), "29-12-1899,6:0:0"},
        {ColumnType::Date, Bytes(-0.5), "30-12-1899,12:0:0"},
        {ColumnType::Date, Bytes(1.9999999), "1-1-1900,0:0:0"}, // rounds into the next day
        {ColumnType::Date, Bytes(-657434.0), "1-1-100,0:0:0"},
        {ColumnType::Date, Bytes(2958465.9999999), "#3343"},
        {ColumnType::Date, Bytes(-657435.0), "#3343"},
        {ColumnType::Date, Bytes(Limits::quiet_NaN()), "#3343"},
        {ColumnType::Decimal, largest, "-170141183460469231731687303715884105727"},
        {ColumnType::Decimal, largest, "-17014118346.0469231731687303715884105727", 28},
        {ColumnType::Decimal, largest, "#3343", 29},
        {ColumnType::Decimal, Decimal(false, {0x80000000, 0, 0, 0}), "#3343"},
        {ColumnType::Decimal, Decimal(true, {0, 0, 0, 0}), "0", 4},
        {ColumnType::Decimal, Decimal(false, {0, 0, 0, 5}), "0.005", 3},
        {ColumnType::Decimal, largest.substr(0, 9), "#3343"}, // declared shorter than the type
        {ColumnType::Double, Bytes(1e21), "1000000000000000000000"},
        {ColumnType::Double, Bytes(-0.0), "0"},
        {ColumnType::Double, Bytes(5e-324).substr(1), "#3343"},
        {ColumnType::Memo, "", ""},
        {ColumnType::Memo, memo(0x80000003, "abc"), "abc"},
        {ColumnType::Memo, memo(0x80000004, "abc"), "#3343"},
        {ColumnType::Memo, memo(0xC0000000, ""), "#3343"},
        {ColumnType::Memo, memo(0x3FFFFFFF, ""), "#3343"},
        {ColumnType::Memo, memo(0x40000001, ""), "#3343"},
        {static_cast<ColumnType>(18), "", "#3259"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TextOf(c.type, c.stored, c.scale), c.text) << "type " << static_cast<int>(c.type);
    EXPECT_EQ(TextOf(ColumnType::Double, Bytes(Limits::max())).size(), 309U);
    EXPECT_EQ(std::strtod(TextOf(ColumnType::Double, Bytes(Limits::denorm_min())).c_str(), nullptr),
              Limits::denorm_min());
}

} // namespace
} // namespace korlan
