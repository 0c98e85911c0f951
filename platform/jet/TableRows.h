// The rows of a table and the fields of a row. Which pages belong to a table is told by its usage map: pages that a
// table gave back keep their old mark of ownership, so a search for that mark would list dead rows. Deleted rows are
// left out; a row that grew and moved stands in its old place.
#pragma once

#include "platform/jet/TableDefinition.h"

#include <optional>
#include <vector>

namespace korlan::jet {

// Bounds what one file can cost. A thousand rows may all name one large value, each correctly; a sound file reads and
// converts each of its bytes a few times at most, so eight times its size, and a megabyte for small ones, is generous.
// It bounds the memory that values take as well.
class WorkBudget {
public:
    explicit WorkBudget(std::size_t fileSize) : left_(8 * fileSize + (std::size_t{1} << 20)) {}
    void Spend(std::size_t bytes) {
        Require(bytes <= left_, "values larger than the file can hold");
        left_ -= bytes;
    }

private:
    std::size_t left_;
};

// Live rows in table order: pages by number, rows by number. The views are of `file`.
std::vector<ByteView> ReadTableRows(const JetFile& file, const TableDefinition& table, WorkBudget& budget);

// The value of a yes/no column, which is the row's mask bit itself; "no" when the row is older than the column.
bool YesNoOfRow(const Layout& form, ByteView row, const Column& column);
// The stored bytes of any other column; nothing when it is NULL.
std::optional<ByteView> FieldOfRow(const Layout& form, const TableDefinition& table, ByteView row,
                                   const Column& column);

} // namespace korlan::jet
