#include "platform/jet/TableRows.h"

#include <algorithm>
#include <array>

namespace korlan::jet {

namespace {

constexpr std::size_t kRowCost = sizeof(ByteView); // what the list of rows takes beside their bytes

void AppendPages(const JetFile& file, ByteView bitmap, std::uint64_t firstPage, std::vector<std::uint32_t>& pages) {
    for (std::size_t i = 0; i < bitmap.Size(); ++i) {
        const unsigned bits = bitmap.U8(i);
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((bits >> bit & 1) == 0) continue;
            const std::uint64_t page = firstPage + 8 * i + bit;
            Require(page < file.PageCount(), "a page outside the file");
            pages.push_back(static_cast<std::uint32_t>(page));
        }
    }
}

// A usage map is a row: kind 0 with a first page and its bits, or kind 1 with the pages that hold the bits.
std::vector<std::uint32_t> PagesOfTable(const JetFile& file, RowPointer usageMap) {
    constexpr std::size_t kBitmapAt = 4;
    const StoredRow row = file.Rows(usageMap.page).Row(usageMap.row);
    Require(row.flags == 0, "a usage map that is no plain row");
    std::vector<std::uint32_t> pages;
    const std::uint8_t kind = row.bytes.U8(0);
    if (kind == 0) {
        AppendPages(file, row.bytes.From(5), row.bytes.U32(1), pages);
        return pages;
    }
    Require(kind == 1, "a usage map of unknown kind");
    const std::uint64_t pagesPerBitmap = (file.PageLayout().pageSize - kBitmapAt) * 8;
    for (std::size_t k = 0; k < (row.bytes.Size() - 1) / 4; ++k) {
        const std::uint32_t bitmapPage = row.bytes.U32(1 + 4 * k);
        if (bitmapPage == 0) continue;
        AppendPages(file, file.Page(bitmapPage, PageType::UsageBitmap).From(kBitmapAt), k * pagesPerBitmap, pages);
    }
    return pages;
}

DataPage PageOfTable(const JetFile& file, const TableDefinition& table, std::uint32_t number) {
    const DataPage page = file.Rows(number);
    Require(page.Owner() == table.page, "a page of another table");
    return page;
}

// One hop only: the body carries the mark that keeps it out of the list in its new place.
ByteView MovedRow(const JetFile& file, const TableDefinition& table, ByteView pointer) {
    const RowPointer target = RowPointer::From(pointer.U32(0));
    const StoredRow body = PageOfTable(file, table, target.page).Row(target.row);
    Require((body.flags & kRowDeleted) != 0, "a moved row that leads to no body");
    return body.bytes;
}

// The column count in front and the null mask at the end frame a row; what lies between is its data.
struct RowFrame {
    std::size_t columnCount; // highest column number + 1 when the row was written
    std::size_t maskAt;

    RowFrame(const Layout& form, ByteView row) : columnCount(form.numberSize == 1 ? row.U8(0) : row.U16(0)), maskAt(0) {
        const std::size_t maskSize = (columnCount + 7) / 8;
        Require(maskSize <= row.Size() - form.numberSize, "a row without room for its mask");
        maskAt = row.Size() - maskSize;
    }
    bool HasBit(ByteView row, const Column& column) const {
        return column.number < columnCount && (row.U8(maskAt + column.number / 8u) >> column.number % 8 & 1) != 0;
    }
};

// The offsets of the variable fields, which lie in reverse before the mask. Wide: two-byte offsets, then their count.
class WideOffsets {
public:
    WideOffsets(ByteView row, std::size_t maskAt) : row_(row) {
        Require(maskAt >= 2 + 2, "a row without variable fields");
        countAt_ = maskAt - 2;
        count_ = row.U16(countAt_);
        Require(count_ < countAt_ / 2, "a row without room for its offsets");
    }
    std::size_t Count() const { return count_; }
    std::size_t TableAt() const { return countAt_ - 2 * (count_ + 1); }
    std::size_t Offset(std::size_t i) const { return row_.U16(countAt_ - 2 * (i + 1)); }

private:
    ByteView row_;
    std::size_t countAt_ = 0, count_ = 0;
};

// Narrow: single bytes, and between them and the count a jump table for rows longer than 256 bytes. Entry k, from 1
// next to the count, is the index of the first offset of 256 k or more; entries past the last such multiple are filler.
class NarrowOffsets {
public:
    NarrowOffsets(ByteView row, std::size_t maskAt) : row_(row) {
        Require(maskAt >= 1 + 1, "a row without variable fields");
        countAt_ = maskAt - 1;
        count_ = row.U8(countAt_);
        jumps_ = (row.Size() - 1) / 256;
        Require(count_ + 1 + jumps_ < countAt_, "a row without room for its offsets");
        usedJumps_ = std::min(jumps_, TableAt() / 256);
    }
    std::size_t Count() const { return count_; }
    std::size_t TableAt() const { return countAt_ - jumps_ - (count_ + 1); }
    std::size_t Offset(std::size_t i) const {
        std::size_t offset = row_.U8(countAt_ - jumps_ - 1 - i);
        for (std::size_t k = 1; k <= usedJumps_; ++k) offset += row_.U8(countAt_ - k) <= i ? 256 : 0;
        return offset;
    }

private:
    ByteView row_;
    std::size_t countAt_ = 0, count_ = 0, jumps_ = 0, usedJumps_ = 0;
};

// Offsets rise from the end of the count to the start of their own table; checking that catches most damage.
template <class Offsets>
std::optional<ByteView> VariableField(const Layout& form, const TableDefinition& table, ByteView row,
                                      const Offsets& offsets, std::size_t index) {
    Require(offsets.Count() <= table.variableColumns, "a row with too many variable fields");
    if (index >= offsets.Count()) return std::nullopt; // the row is older than the column
    std::size_t start = 0, end = 0, previous = form.numberSize;
    for (std::size_t i = 0; i <= offsets.Count(); ++i) {
        const std::size_t offset = offsets.Offset(i);
        Require(offset >= previous, "a row with falling offsets");
        if (i == index) start = offset;
        if (i == index + 1) end = offset;
        previous = offset;
    }
    Require(previous == offsets.TableAt(), "a row whose fields do not end where its offsets start");
    return row.Part(start, end - start);
}

} // namespace

std::vector<ByteView> ReadTableRows(const JetFile& file, const TableDefinition& table, WorkBudget& budget) {
    std::vector<ByteView> rows;
    for (const std::uint32_t number : PagesOfTable(file, table.usageMap)) {
        const DataPage page = PageOfTable(file, table, number);
        for (std::uint32_t i = 0; i < page.RowCount(); ++i) {
            const StoredRow row = page.Row(i);
            if ((row.flags & kRowDeleted) != 0) continue;
            rows.push_back((row.flags & kRowMoved) != 0 ? MovedRow(file, table, row.bytes) : row.bytes);
            budget.Spend(rows.back().Size() + kRowCost);
            Require(RowFrame(file.PageLayout(), rows.back()).columnCount <= table.highestColumn,
                    "a row with too many columns");
        }
    }
    return rows;
}

bool YesNoOfRow(const Layout& form, ByteView row, const Column& column) {
    return RowFrame(form, row).HasBit(row, column);
}

std::optional<ByteView> FieldOfRow(const Layout& form, const TableDefinition& table, ByteView row,
                                   const Column& column) {
    const RowFrame frame(form, row);
    if (!frame.HasBit(row, column)) return std::nullopt;
    if (column.isFixed) {
        const ByteView data = row.Part(form.numberSize, frame.maskAt - form.numberSize);
        return data.Part(column.fixedOffset, column.size);
    }
    if (form.numberSize == 1)
        return VariableField(form, table, row, NarrowOffsets(row, frame.maskAt), column.variableIndex);
    return VariableField(form, table, row, WideOffsets(row, frame.maskAt), column.variableIndex);
}

} // namespace korlan::jet
