#include "platform/jet/TableDefinition.h"

#include <algorithm>

namespace korlan::jet {

namespace {

constexpr std::size_t kMostDefinitionPages = 256, kMostColumns = 255, kMostRealIndexes = 1000;
constexpr std::size_t kNextPageAt = 4, kPageHeadSize = 8;
constexpr std::uint8_t kFlagFixed = 1;

// The whole first page, then each further one without its head. A chain that comes back to one of its pages is damage.
std::string JoinedDefinition(const JetFile& file, std::uint32_t firstPage) {
    std::string joined;
    std::vector<std::uint32_t> seen;
    for (std::uint32_t number = firstPage; number != 0;) {
        Require(seen.size() < kMostDefinitionPages, "a definition without end");
        Require(std::find(seen.begin(), seen.end(), number) == seen.end(), "a definition that names itself");
        seen.push_back(number);
        const ByteView page = file.Page(number, PageType::Definition);
        joined.append(page.From(joined.empty() ? 0 : kPageHeadSize).Chars());
        number = page.U32(kNextPageAt);
    }
    return joined;
}

Column ReadDescriptor(const Layout& form, ByteView descriptor) {
    Column column;
    column.type = static_cast<ColumnType>(descriptor.U8(0));
    column.number = descriptor.U16(form.numberAt);
    column.variableIndex = descriptor.U16(form.variableIndexAt);
    column.scale = descriptor.U8(form.scaleAt);
    column.isFixed = (descriptor.U8(form.flagsAt) & kFlagFixed) != 0;
    column.fixedOffset = descriptor.U16(form.offsetAt);
    column.size = descriptor.U16(form.sizeAt);
    return column;
}

// Reads the name at `at` and returns the offset after it.
std::size_t ReadName(const JetFile& file, ByteView definition, std::size_t at, std::string& name) {
    const std::size_t numberSize = file.PageLayout().numberSize;
    const std::size_t length = numberSize == 1 ? definition.U8(at) : definition.U16(at);
    file.AppendNameText(name, definition.Part(at + numberSize, length).Chars());
    return at + numberSize + length;
}

void RequireSoundColumns(const TableDefinition& table) {
    std::vector<std::uint16_t> indexes;
    for (std::size_t i = 0; i < table.columns.size(); ++i) { // sorted by number already
        const Column& column = table.columns[i];
        Require(column.number < table.highestColumn, "a column number out of range");
        Require(i == 0 || table.columns[i - 1].number != column.number, "two columns of one number");
        if (column.isFixed) continue;
        Require(column.variableIndex < table.variableColumns, "a variable column out of range");
        indexes.push_back(column.variableIndex);
    }
    std::sort(indexes.begin(), indexes.end());
    Require(std::adjacent_find(indexes.begin(), indexes.end()) == indexes.end(), "two variable columns of one place");
}

} // namespace

TableDefinition ReadTableDefinition(const JetFile& file, std::uint32_t page) {
    const Layout& form = file.PageLayout();
    const std::string joined = JoinedDefinition(file, page);
    const ByteView bytes(joined);
    TableDefinition table;
    table.page = page;
    table.highestColumn = bytes.U16(form.highestColumnAt);
    table.variableColumns = bytes.U16(form.variableColumnsAt);
    table.usageMap = RowPointer::From(bytes.U32(form.usageMapAt));
    const std::size_t columns = bytes.U16(form.columnsAt);
    const std::size_t realIndexes = bytes.U32(form.realIndexesAt);
    Require(columns <= kMostColumns, "too many columns");
    Require(realIndexes <= kMostRealIndexes, "too many indexes");

    std::size_t at = form.indexRecordsAt + realIndexes * form.indexRecordSize;
    for (std::size_t i = 0; i < columns; ++i, at += form.descriptorSize)
        table.columns.push_back(ReadDescriptor(form, bytes.Part(at, form.descriptorSize)));
    for (Column& column : table.columns) at = ReadName(file, bytes, at, column.name);
    std::sort(table.columns.begin(), table.columns.end(),
              [](const Column& a, const Column& b) { return a.number < b.number; });
    RequireSoundColumns(table);
    return table;
}

} // namespace korlan::jet
