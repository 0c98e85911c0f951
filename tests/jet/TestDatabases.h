// The test databases under tests/data/jet: their bytes, their expected rows (NAME.tsv) and columns (SCHEMA.tsv).
// In a .tsv, %09 %0A %0D %25 stand for tab, line feed, carriage return and percent, and %N alone for NULL.
#pragma once

#include "TestData.h"
#include "platform/jet/JetDatabase.h"
#include "tests/support/Table.h"

#include <memory>
#include <optional>
#include <sstream>

namespace korlan::test {

using Cell = std::optional<std::string>;
using Row = std::vector<Cell>;

inline std::string ReadTestFile(const std::string& name) {
    std::ifstream file(KLN_TEST_DATA "/jet/" + name, std::ios::binary);
    if (!file) throw std::runtime_error("no test file " + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline Cell DecodedCell(const std::string& text) {
    if (text == "%N") return std::nullopt;
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        decoded += text[at] == '%' ? static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16)) : text[at];
        if (text[at] == '%') at += 2;
    }
    return decoded;
}

// First the column names, then the rows.
inline std::vector<Row> ReadTsv(const std::string& name) {
    std::istringstream lines(ReadTestFile(name));
    std::vector<Row> rows;
    for (std::string line; std::getline(lines, line);) {
        rows.emplace_back();
        for (const std::string& cell : SplitAt(line, "\t")) rows.back().push_back(DecodedCell(cell));
    }
    return rows;
}

inline std::shared_ptr<const jet::JetFile> OpenBytes(std::string bytes, jet::CodePageDecoder decoder = nullptr) {
    return std::make_shared<const jet::JetFile>(std::move(bytes), decoder);
}

inline std::vector<Row> ReadAll(jet::JetTable& table) {
    std::vector<Row> rows(table.RowCount());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < table.Columns().size(); ++column) {
            const auto value = table.Value(row, column);
            rows[row].push_back(value ? Cell(std::string(*value)) : Cell());
        }
    }
    return rows;
}

} // namespace korlan::test
