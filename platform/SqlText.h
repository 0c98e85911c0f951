// As much of SQL as the program's statements need: cut into tokens, and "SELECT * FROM table" taken apart. Shared by
// every kind of database.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korlan {

enum class SqlKind {
    Space,
    Word,   // a keyword, a bare name or a number
    Quoted, // a name in [..], ".." or `..`
    Text,   // a literal in '..', in which '' stands for one quote
    Sign,   // any other single character
};
struct SqlToken {
    SqlKind kind;
    std::string_view text; // as it stands, quotes included; the tokens end to end are the statement
};
std::vector<SqlToken> SplitSql(std::string_view sql);

bool IsSelect(std::string_view tableOrSql);

struct SelectAll {
    std::string table;     // without its quotes
    std::string_view rest; // what follows the table's name, up to a closing semicolon
};
// Nothing when the statement does not begin with SELECT * FROM and a name.
std::optional<SelectAll> ParseSelectAll(std::string_view sql);

// The table that is wanted whole: of its bare name or of "SELECT * FROM table". Nothing for any other statement.
std::optional<std::string> WholeTableOf(std::string_view tableOrSql);

} // namespace korlan
