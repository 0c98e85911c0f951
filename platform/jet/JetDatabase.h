// Jet 3, Jet 4 and 2007 .accdb files, read only: tables for those who know the format, and the Database of the
// program for everybody else. Damage raises 3343; a file may be damaged and still look sound, so values stay untrusted.
#pragma once

#include "platform/Database.h"
#include "platform/jet/TableRows.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korlan::jet {

// A table, its list of rows complete. A column is converted whole when somebody first asks for it: damage in a column
// shows before its first value is handed out, and in a column nobody wants it does not matter.
class JetTable {
public:
    JetTable(std::shared_ptr<const JetFile> file, TableDefinition definition);
    const std::vector<Column>& Columns() const { return definition_.columns; }
    std::size_t RowCount() const { return rows_.size(); }
    // Nothing when the value is NULL. Both numbers must be below the table's own.
    std::optional<std::string_view> Value(std::size_t row, std::size_t column);

private:
    struct Cells { // of one column, their texts end to end
        std::string texts;
        std::vector<std::uint32_t> ends;
        std::vector<bool> isNull;
    };
    std::unique_ptr<Cells> Convert(const Column& column);

    std::shared_ptr<const JetFile> file_;
    TableDefinition definition_;
    WorkBudget budget_;
    std::vector<ByteView> rows_;
    std::vector<std::unique_ptr<Cells>> cells_;
};

// The local table of that name; system tables count. Raises 3078 when there is none, or only a link to another file.
JetTable OpenJetTable(std::shared_ptr<const JetFile> file, std::string_view name);

bool LooksLikeJet(std::string_view startOfFile); // 32 bytes suffice

// connect: "" or ";pwd=" and the password, which a file that has one must get: else 3031. A file without one takes any.
// Writing of any kind raises 3027; a transaction may begin and end. Statements other than "SELECT * FROM table": 3251.
std::unique_ptr<Database> OpenJetDatabase(std::string bytes, const std::string& connect, CodePageDecoder decoder);

} // namespace korlan::jet
