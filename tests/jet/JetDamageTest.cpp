// Damaged and hostile files: each ends in rows or in exactly one RuntimeError, with bounded work. What is read outside
// the file's bytes shows in the build with sanitizers.
#include "tests/jet/TestDatabases.h"
#include "tests/support/Failing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <random>

namespace korlan {
namespace {

using test::ErrorOf;
using test::OpenBytes;
using test::ReadTestFile;

std::uint32_t GetU32(const std::string& bytes, std::size_t at) {
    return jet::ByteView(bytes).U32(at);
}

void PutNumber(std::string& bytes, std::size_t at, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i) bytes[at + i] = static_cast<char>(value >> 8 * i);
}

std::size_t PageSizeOf(const std::string& bytes) {
    return bytes[0x14] == 0 ? 2048 : 4096;
}

std::vector<test::Row> ReadFilesTable(std::string bytes) {
    jet::JetTable table = OpenJetTable(OpenBytes(std::move(bytes)), "Files");
    return test::ReadAll(table);
}

class Mutator {
public:
    explicit Mutator(std::uint32_t seed) : random_(seed) {}

    void Damage(std::string& bytes) {
        for (std::size_t times = 1 + Below(3); times > 0; --times) DamageOnce(bytes);
    }

private:
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }

    std::size_t SomeOffset(const std::string& bytes) {
        const std::size_t pageSize = PageSizeOf(bytes);
        const std::size_t page = Below(bytes.size() / pageSize + 1) * pageSize;
        switch (Below(4)) {
        case 0: return std::min(page + Below(72), bytes.size() - 1);                // head of a page, of a definition
        case 1: return std::min(page + pageSize - 1 - Below(48), bytes.size() - 1); // ends of rows
        default: return Below(bytes.size());
        }
    }

    void DamageOnce(std::string& bytes) {
        if (bytes.size() < 2 * 4096) return;
        const std::size_t pageSize = PageSizeOf(bytes);
        const std::size_t at = SomeOffset(bytes);
        switch (Below(6)) {
        case 0: bytes[at] = static_cast<char>(bytes[at] ^ 1 << Below(8)); break;
        case 1: // a run of one byte
            for (std::size_t i = at, end = std::min(bytes.size(), at + 1 + Below(64)); i < end; ++i)
                bytes[i] = i == at ? static_cast<char>(random_()) : bytes[at];
            break;
        case 2: bytes.resize(Below(4) == 0 ? at : (1 + Below(bytes.size() / pageSize)) * pageSize); break;
        case 3: { // two pages swapped
            const std::size_t a = Below(bytes.size() / pageSize), b = Below(bytes.size() / pageSize);
            for (std::size_t i = 0; i < pageSize; ++i) std::swap(bytes[a * pageSize + i], bytes[b * pageSize + i]);
            break;
        }
        default: { // a hostile number
            const auto pages = static_cast<std::uint32_t>(bytes.size() / pageSize);
            const std::array<std::uint32_t, 14> numbers = {
                0, 1, 2, pages - 1, pages, pages << 8, 0x7F, 0x80, 0xFF, 0xFFF, 0x1FFF, 0xFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
            PutNumber(bytes, at, numbers[Below(numbers.size())], std::size_t{1} << Below(3));
        }
        }
    }

    std::mt19937 random_; // gives the same numbers everywhere
};

class DamagedCopies : public testing::TestWithParam<const char*> {};

TEST_P(DamagedCopies, EndInRowsOrInOneError) {
    constexpr std::uint32_t kCopies = 500;
    const std::string sound = ReadTestFile(GetParam());
    const std::vector<test::Row> soundRows = ReadFilesTable(sound);
    int refused = 0, same = 0, changed = 0;
    for (std::uint32_t seed = 1; seed <= kCopies; ++seed) {
        SCOPED_TRACE(seed);
        std::string damaged = sound;
        Mutator(seed).Damage(damaged);
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
    std::printf("%s: %d refused, %d other rows, %d same rows\n", GetParam(), refused, changed, same);
}

INSTANTIATE_TEST_SUITE_P(All, DamagedCopies,
                         testing::Values("types.mdb", "deleted.mdb", "jet3/types.mdb", "jet3/rowlengths.mdb"));

std::uint32_t DefinitionPageOf(const std::string& bytes, std::string_view table) {
    jet::JetTable catalogue = OpenJetTable(OpenBytes(bytes), "MSysObjects");
    std::size_t id = 0, name = 0;
    for (std::size_t i = 0; i < catalogue.Columns().size(); ++i) {
        if (catalogue.Columns()[i].name == "Id") id = i;
        if (catalogue.Columns()[i].name == "Name") name = i;
    }
    for (std::size_t row = 0; row < catalogue.RowCount(); ++row)
        if (catalogue.Value(row, name) == table)
            return static_cast<std::uint32_t>(std::stoul(std::string(catalogue.Value(row, id).value())));
    throw std::runtime_error("no such table");
}

// Offsets of the data pages of one owner.
std::vector<std::size_t> DataPagesOf(const std::string& bytes, std::uint32_t owner) {
    std::vector<std::size_t> pages;
    for (std::size_t at = PageSizeOf(bytes); at < bytes.size(); at += PageSizeOf(bytes))
        if (bytes[at] == 1 && GetU32(bytes, at + 4) == owner) pages.push_back(at);
    return pages;
}

// Offset of a row in the file.
std::size_t RowAt(const std::string& bytes, std::uint32_t pointer) {
    const std::size_t page = (pointer >> 8) * PageSizeOf(bytes);
    const std::size_t offsets = PageSizeOf(bytes) == 2048 ? 10 : 14;
    return page + (GetU32(bytes, page + offsets + 2 * (pointer & 0xFF)) & 0x1FFF);
}

using Harm = void (*)(std::string&);
struct HostileFile {
    const char* file;
    Harm harm;
    const char* reason; // in the error's description: the very check that stops it
};

void DefinitionNamesItself(std::string& bytes) {
    const std::uint32_t page = DefinitionPageOf(bytes, "FILES");
    PutNumber(bytes, page * 4096 + 4, page, 4);
}

void EveryChainIsARing(std::string& bytes) {
    for (const std::size_t page : DataPagesOf(bytes, jet::kLongValueOwner)) {
        const std::uint32_t rows = GetU32(bytes, page + 12) & 0xFFFF;
        for (std::uint32_t row = 0; row < rows; ++row) {
            const auto pointer = static_cast<std::uint32_t>(page / 4096 << 8 | row);
            PutNumber(bytes, RowAt(bytes, pointer), pointer, 4);
        }
    }
}

// Offset of the usage map's row.
std::size_t UsageMapAt(const std::string& bytes) {
    const std::size_t pageSize = PageSizeOf(bytes);
    const std::size_t definition = DefinitionPageOf(bytes, "Files") * pageSize;
    return RowAt(bytes, GetU32(bytes, definition + (pageSize == 2048 ? 35 : 55)));
}

void BitmapPageOutsideTheFile(std::string& bytes) {
    ASSERT_EQ(bytes[UsageMapAt(bytes)], 1) << "the kind of map in this file";
    PutNumber(bytes, UsageMapAt(bytes) + 1, 0xFFFFFFF0, 4);
}

// Eight pages before page 0: in 32 bits the numbers would wrap to the very pages of the table.
void InlineMapWraps(std::string& bytes) {
    const std::size_t map = UsageMapAt(bytes);
    ASSERT_EQ(GetU32(bytes, map + 1) << 8 | static_cast<std::uint8_t>(bytes[map]), 0U) << "inline, from page 0 on";
    bytes.replace(map + 5, 128, '\0' + bytes.substr(map + 5, 127));
    PutNumber(bytes, map + 1, 0xFFFFFFF8, 4);
}

void InlineMapNamesAPageOfAnother(std::string& bytes) {
    const std::size_t page = DataPagesOf(bytes, 2).at(0) / PageSizeOf(bytes); // of the catalogue
    char& bits = bytes[UsageMapAt(bytes) + 5 + page / 8];
    bits = static_cast<char>(bits | 1 << page % 8);
}

void RowStartsAmongTheOffsets(std::string& bytes) {
    const std::size_t page = DataPagesOf(bytes, DefinitionPageOf(bytes, "Files")).at(0);
    PutNumber(bytes, page + 14 + 2 * ((GetU32(bytes, page + 12) & 0xFFFF) - 1), 14, 2);
}

constexpr std::size_t kMovedRow = 26 * 4096 + 0xEE3; // a pointer to page 31, row 50
void MovedRowNamesItself(std::string& bytes) {
    PutNumber(bytes, kMovedRow, 26 << 8 | 4, 4);
}
void MovedRowNamesALiveRow(std::string& bytes) {
    PutNumber(bytes, kMovedRow, 26 << 8 | 1, 4);
}
void MovedRowLeavesTheFile(std::string& bytes) {
    PutNumber(bytes, kMovedRow, 0xFFFFFF00, 4);
}

// All pages but one are full of pointers to the large row on that one; each of them is in order.
void ManyRowsNameALargeOne(std::string& bytes) {
    constexpr std::uint32_t kRows = 255; // what the low byte of a pointer can tell apart
    const std::vector<std::size_t> pages = DataPagesOf(bytes, DefinitionPageOf(bytes, "Files"));
    PutNumber(bytes, pages[0] + 12, 1, 2);
    PutNumber(bytes, pages[0] + 14, 16 | jet::kRowDeleted, 2);
    PutNumber(bytes, pages[0] + 16, 5, 2); // the row's five columns
    for (std::size_t i = 1; i < pages.size(); ++i) {
        PutNumber(bytes, pages[i] + 12, kRows, 2);
        for (std::uint32_t row = 0; row < kRows; ++row) {
            PutNumber(bytes, pages[i] + 14 + 2 * row, (4096 - 4 * (row + 1)) | jet::kRowMoved, 2);
            PutNumber(bytes, pages[i] + 4096 - 4 * (row + 1), static_cast<std::uint32_t>(pages[0] / 4096 << 8), 4);
        }
    }
}

void TooManyColumns(std::string& bytes) {
    PutNumber(bytes, DefinitionPageOf(bytes, "Files") * 4096 + 45, 0xFFFF, 2);
}
void TooManyIndexes(std::string& bytes) {
    PutNumber(bytes, DefinitionPageOf(bytes, "Files") * 4096 + 51, ~0u, 4);
}
void CutInsideAPage(std::string& bytes) {
    bytes.resize(bytes.size() - 100);
}
void CutToTwoPages(std::string& bytes) {
    bytes.resize(2 * 4096);
}
void LastPagesMissing(std::string& bytes) {
    bytes.resize(bytes.size() - 20 * 4096);
}
void Empty(std::string& bytes) {
    bytes.clear();
}
void HeadOnly(std::string& bytes) {
    bytes.resize(0x15);
}
void LaterVersion(std::string& bytes) {
    bytes[0x14] = 3;
}
void SignatureOfAnother(std::string& bytes) {
    bytes.replace(4, 15, "Standard ACE DB");
}
void TooLarge(std::string& bytes) {
    bytes.resize(jet::kLargestFile + 4096);
}
void PasswordPages(std::string& bytes) {
    bytes.replace(2 * 4096, 4, "\x9A\x11\x42\x07");
} // encrypted by a password

TEST(HostileFiles, AreRefusedAsNoDatabase) {
    const HostileFile files[] = {
        {"order.mdb", DefinitionNamesItself, "a definition that names itself"},
        {"texts.mdb", EveryChainIsARing, "a long value of another length"},
        {"deleted.mdb", BitmapPageOutsideTheFile, "a page outside the file"},
        {"jet3/deleted.mdb", InlineMapWraps, "a page outside the file"},
        {"jet3/deleted.mdb", InlineMapNamesAPageOfAnother, "a page of another table"},
        {"SP1.mdb", RowStartsAmongTheOffsets, "a row outside its page"},
        {"deleted.mdb", MovedRowNamesItself, "a moved row that leads to no body"},
        {"deleted.mdb", MovedRowNamesALiveRow, "a moved row that leads to no body"},
        {"deleted.mdb", MovedRowLeavesTheFile, "a page outside the file"},
        {"rows5000.mdb", ManyRowsNameALargeOne, "values larger than the file can hold"},
        {"SP1.mdb", TooManyColumns, "too many columns"},
        {"SP1.mdb", TooManyIndexes, "too many indexes"},
        {"SP1.mdb", CutInsideAPage, "the file is cut short"},
        {"SP1.mdb", CutToTwoPages, "the file is cut short"},
        {"rows5000.mdb", LastPagesMissing, "a page outside the file"},
        {"SP1.mdb", Empty, "an offset past the end"},
        {"SP1.mdb", HeadOnly, "the file is cut short"},
        {"fmt2007.accdb", LaterVersion, "a version this program does not know"},
        {"SP1.mdb", LaterVersion, "a version this program does not know"},
        {"SP1.mdb", SignatureOfAnother, "a version this program does not know"},
        {"SP1.mdb", TooLarge, "the file is too large"},
        {"fmt2007.accdb", PasswordPages, "Encrypted database files cannot be read"},
    };
    for (const HostileFile& c : files) {
        std::string bytes = ReadTestFile(c.file);
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

// A column of an unknown type matters to those who ask for it only.
TEST(HostileFiles, UnknownTypesMatterWhenWanted) {
    std::string bytes = ReadTestFile("SP1.mdb");
    const std::size_t definition = DefinitionPageOf(bytes, "Files") * 4096;
    const std::size_t descriptors = definition + 63 + 12 * GetU32(bytes, definition + 51);
    bytes[descriptors] = 19;
    jet::JetTable table = OpenJetTable(OpenBytes(bytes), "Files");
    int unknown = 0;
    for (std::size_t i = 0; i < table.Columns().size(); ++i)
        unknown += ErrorOf([&] { table.Value(0, i); }) == kErrInvalidFieldType ? 1 : 0;
    EXPECT_EQ(unknown, 1);
}

} // namespace
} // namespace korlan
