// Writes a Jet 3 database: one table of text columns beside the system tables. The same rows give the same bytes. There
// are no indexes, not even on the system tables: readers that scan tables read it, the engine itself may refuse it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace korlan::jet {

constexpr std::size_t kLongestText = 255; // bytes of a value in code page 1252

struct TextTable {
    std::string name;                 // texts are UTF-8
    std::vector<std::string> columns; // at most 40, of at most 64 characters
    std::vector<std::vector<std::string>> rows;
};

// Whether every character of a text has a byte in code page 1252.
bool FitsCodePage(const std::string& text);

// The bytes of the file; an empty text is stored as NULL. Raises 3163 for a text longer than its column, 3349 for one
// that code page 1252 cannot hold, 3047 for a row of more columns than the table, 3026 for more rows than fit the
// largest file that the reader takes.
std::string Jet3FileOf(const TextTable& table);

} // namespace korlan::jet
