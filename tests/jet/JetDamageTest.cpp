// Damaged and hostile files: each ends in rows or in exactly one RuntimeError, with bounded work. What is read outside
// the file's bytes shows in the build with sanitizers.
#include "tests/jet/TestDatabases.h"
#include "tests/support/Failing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace korlan {
namespace {

using test::ErrorOf;
using test::OpenBytes;
using test::ReadTestFile;

using Bytes = std::string;

std::uint32_t GetU32(const Bytes& bytes, std::size_t at) {
    return jet::ByteView(bytes).U32(at);
}

void PutNumber(Bytes& bytes, std::size_t at, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i) bytes[at + i] = static_cast<char>(value >> 8 * i);
}

std::size_t PageSizeOf(const Bytes& bytes) {
    return bytes[0x14] == 0 ? 2048 : 4096;
}

std::vector<test::Row> ReadFilesTable(std::string bytes) {
    jet::JetTable table = OpenJetTable(OpenBytes(std::move(bytes)), "Files");
    return test::ReadAll(table);
}

// The same damage for a seed everywhere.
void Damage(Bytes& bytes, std::uint32_t seed) {
    std::mt19937 random(seed);
    const auto below = [&](std::size_t limit) { return limit == 0 ? 0 : random() % limit; };
    for (std::size_t times = 1 + below(3); times > 0 && bytes.size() >= 2 * 4096; --times) {
        const std::size_t pageSize = PageSizeOf(bytes), pages = bytes.size() / pageSize;
        const std::size_t page = below(pages + 1) * pageSize;
        // The head of a page or of a definition, the ends of rows, or anywhere.
        const std::size_t places[] = {page + below(72), page + pageSize - 1 - below(48), below(bytes.size()),
                                      below(bytes.size())};
        const std::size_t at = std::min(places[below(4)], bytes.size() - 1);
        switch (below(6)) {
        case 0: bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(8)); break;
        case 1: { // a run of one byte
            const std::size_t run = std::min(1 + below(64), bytes.size() - at);
            bytes.replace(at, run, run, static_cast<char>(random()));
            break;
        }
        case 2: bytes.resize(below(4) == 0 ? at : (1 + below(pages)) * pageSize); break;
        default: { // a hostile number
            const auto count = static_cast<std::uint32_t>(pages);
            const std::uint32_t numbers[] = {0,    1,    2,     count - 1, count,  count << 8, 0x7F,
                                             0x80, 0xFF, 0xFFF, 0x1FFF,    0xFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
            const std::uint32_t number = numbers[below(14)];
            PutNumber(bytes, at, number, std::size_t{1} << below(3));
        }
        }
    }
}

class DamagedCopies : public testing::TestWithParam<const char*> {};

TEST_P(DamagedCopies, EndInRowsOrInOneError) {
    constexpr std::uint32_t kCopies = 500;
    const std::string sound = ReadTestFile(GetParam());
    const std::vector<test::Row> soundRows = ReadFilesTable(sound);
    int refused = 0, same = 0, changed = 0;
    for (std::uint32_t seed = 1; seed <= kCopies; ++seed) {
        SCOPED_TRACE(seed);
        std::string damaged = sound;
        Damage(damaged, seed);
        const std::size_t mostBytes = 8 * damaged.size() + (1 << 20);
        try {
            const std::vector<test::Row> rows = ReadFilesTable(std::move(damaged));
            std::size_t bytes = 0;
            for (const test::Row& row : rows)
                for (const test::Cell& cell : row) bytes += cell.value_or("").size();
            EXPECT_LE(bytes, mostBytes);
            ++(rows == soundRows ? same : changed);
        } catch (const RuntimeError& error) {
            EXPECT_THAT(error.Number(),
                        testing::AnyOf(int{kErrUnrecognizedFormat}, int{kErrNoSuchTable}, int{kErrInvalidFieldType}))
                << error.what();
            ++refused;
        } catch (const std::exception& other) {
            ADD_FAILURE() << other.what();
        }
    }
    EXPECT_GT(refused, 50);
    EXPECT_GT(changed, 5);
    EXPECT_GT(same, 50); // damage on pages that nobody reads
}

INSTANTIATE_TEST_SUITE_P(All, DamagedCopies,
                         testing::Values("types.mdb", "deleted.mdb", "jet3/types.mdb", "jet3/rowlengths.mdb"));

// The table's definition page, told by the catalogue.
std::uint32_t DefinitionPageOf(const Bytes& bytes, std::string_view table) {
    jet::JetTable catalogue = OpenJetTable(OpenBytes(bytes), "MSysObjects");
    const auto column = [&](std::string_view name) {
        const auto found = std::ranges::find(catalogue.Columns(), name, &jet::Column::name);
        return static_cast<std::size_t>(found - catalogue.Columns().begin());
    };
    for (std::size_t row = 0; row < catalogue.RowCount(); ++row)
        if (catalogue.Value(row, column("Name")) == table)
            return static_cast<std::uint32_t>(std::stoul(std::string(catalogue.Value(row, column("Id")).value())));
    throw std::runtime_error("no such table");
}

// Offset of the usage map's row.
std::size_t UsageMapAt(const Bytes& bytes) {
    const std::uint32_t pointer = GetU32(bytes, DefinitionPageOf(bytes, "Files") * 4096 + 55);
    const std::size_t page = (pointer >> 8) * 4096;
    return page + (GetU32(bytes, page + 14 + 2 * (pointer & 0xFF)) & 0x1FFF);
}

// Overwrites a number in the definition of the table.
template <std::size_t kAt, std::size_t kSize>
void DefinitionHas(Bytes& bytes) {
    const std::uint32_t page = DefinitionPageOf(bytes, "Files");
    PutNumber(bytes, page * 4096 + kAt, kAt == 4 ? page : ~0u, kSize);
}
template <std::uint32_t kPointer>
void MovedRowNames(Bytes& bytes) {
    PutNumber(bytes, 26 * 4096 + 0xEE3, kPointer, 4); // a pointer to page 31, row 50
}

TEST(HostileFiles, AreRefusedAsNoDatabase) {
    const struct {
        const char* file;
        std::function<void(Bytes&)> harm;
        const char* reason; // in the error's description: the very check that stops it
    } files[] = {
        {"SP1.mdb", DefinitionHas<4, 4>, "a definition that names itself"},
        {"SP1.mdb", DefinitionHas<45, 2>, "too many columns"},
        {"SP1.mdb", DefinitionHas<51, 4>, "too many indexes"},
        {"deleted.mdb", [](Bytes& b) { PutNumber(b, UsageMapAt(b) + 1, ~15u, 4); }, "a page outside the file"},
        {"deleted.mdb", [](Bytes& b) { PutNumber(b, 26 * 4096 + 14, 14, 2); }, "a row outside its page"},
        {"deleted.mdb", MovedRowNames<26 << 8 | 4>, "a moved row that leads to no body"}, // itself
        {"deleted.mdb", MovedRowNames<26 << 8 | 1>, "a moved row that leads to no body"}, // a live row
        {"deleted.mdb", MovedRowNames<0xFFFFFF00>, "a page outside the file"},
        {"SP1.mdb", [](Bytes& b) { b.resize(b.size() - 100); }, "the file is cut short"},
        {"rows5000.mdb", [](Bytes& b) { b.resize(b.size() - 20 * 4096); }, "a page outside the file"},
        {"SP1.mdb", [](Bytes& b) { b.resize(0); }, "an offset past the end"},
        {"SP1.mdb", [](Bytes& b) { b.resize(0x15); }, "the file is cut short"},
        {"SP1.mdb", [](Bytes& b) { b.resize(jet::kLargestFile + 4096); }, "the file is too large"},
        {"fmt2007.accdb", [](Bytes& b) { b[0x14] = 3; }, "a version this program does not know"},
        {"fmt2007.accdb", [](Bytes& b) { b.replace(2 * 4096, 4, "\x9A\x11\x42\x07"); },
         "Encrypted database files cannot be read"},
    };
    for (const auto& c : files) {
        Bytes bytes = ReadTestFile(c.file);
        ASSERT_EQ(ErrorOf([&] { ReadFilesTable(bytes); }), 0) << c.file;
        c.harm(bytes);
        try {
            ReadFilesTable(bytes);
            ADD_FAILURE() << c.file << " reads, in spite of: " << c.reason;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.Number(), kErrUnrecognizedFormat);
            EXPECT_THAT(error.Description(), testing::HasSubstr(c.reason)) << c.file;
        }
    }
}

} // namespace
} // namespace korlan
