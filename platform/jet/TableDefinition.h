// The definition of a table: its columns, and where the map of its pages lies. A definition is one page or a chain of
// them; joined they hold a head, index records (skipped), column descriptors in any order, then the columns' names.
#pragma once

#include "platform/jet/JetFile.h"

#include <string>
#include <vector>

namespace korlan::jet {

enum class ColumnType : std::uint8_t {
    YesNo = 1,
    Byte = 2,
    Integer = 3,
    Long = 4,
    Currency = 5,
    Single = 6,
    Double = 7,
    Date = 8,
    Binary = 9,
    Text = 10,
    Ole = 11,
    Memo = 12,
    Guid = 15,
    Decimal = 16, // others occur, and matter only when somebody asks for such a column
};

struct Column {
    std::string name;
    ColumnType type;
    bool isFixed;                // by its flag alone: numbers do live in the variable part of a row
    std::uint16_t number;        // its bit in a row's null mask, its place in the table's order
    std::uint16_t variableIndex; // of a variable column
    std::uint16_t fixedOffset;   // of a fixed column, in the fixed part of a row
    std::uint16_t size;          // declared, in bytes; 0 for long values
    std::uint8_t scale;          // of a decimal
};

struct TableDefinition {
    std::uint32_t page;            // its first page, by which data pages name their owner
    std::uint16_t highestColumn;   // highest column number ever given + 1
    std::uint16_t variableColumns; // deleted ones included
    RowPointer usageMap;
    std::vector<Column> columns; // in table order
};

TableDefinition ReadTableDefinition(const JetFile& file, std::uint32_t page);

} // namespace korlan::jet
