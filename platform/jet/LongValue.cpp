#include "platform/jet/LongValue.h"

namespace korlan::jet {

namespace {

constexpr std::size_t kHeadSize = 12, kPointerAt = 4, kPointerSize = 4;
constexpr std::uint32_t kInline = 0x80000000, kSingleRow = 0x40000000, kKindBits = kInline | kSingleRow;

ByteView LongValueRow(const JetFile& file, RowPointer pointer) {
    const DataPage page = file.Rows(pointer.page);
    Require(page.Owner() == kLongValueOwner, "a long value on another kind of page");
    const StoredRow row = page.Row(pointer.row);
    Require(row.flags == 0, "a long value that is no plain row");
    return row.bytes;
}

// Each piece is a pointer to the next and then data. Every piece must bring data and the sum may not pass the length:
// so the chain ends, whatever it names.
ByteView JoinedChain(const JetFile& file, std::uint32_t stored, std::size_t length, std::string& storage) {
    storage.clear();
    while (stored != 0) {
        const ByteView piece = LongValueRow(file, RowPointer::From(stored));
        const ByteView data = piece.From(kPointerSize);
        Require(data.Size() > 0 && data.Size() <= length - storage.size(), "a long value of another length");
        storage.append(data.Chars());
        stored = piece.U32(0);
    }
    return ByteView(storage);
}

} // namespace

ByteView LongValueBytes(const JetFile& file, ByteView field, std::string& storage, WorkBudget& budget) {
    if (field.Size() == 0) return field;
    const std::uint32_t head = field.U32(0);
    const std::uint32_t kind = head & kKindBits;
    const std::size_t length = head & ~kKindBits;
    const std::uint32_t pointer = field.U32(kPointerAt);
    ByteView value = field.From(kHeadSize);
    Require(kind != kKindBits, "a long value of two kinds");
    if (length == 0) return ByteView();
    budget.Spend(length);
    if (kind == kSingleRow) value = LongValueRow(file, RowPointer::From(pointer));
    if (kind == 0) value = JoinedChain(file, pointer, length, storage);
    Require(value.Size() == length, "a long value of another length");
    return value;
}

} // namespace korlan::jet
