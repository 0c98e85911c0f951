// Tables of test cases in files: fields separated by tabs, the first line names the columns, "\r \n \t \\ \xHH" in
// fields.
#pragma once

#include <cstddef>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korlan::test {

using TableRow = std::map<std::string, std::string>; // by column, as in the file

inline std::vector<std::string> SplitAt(std::string_view text, std::string_view separator) {
    std::vector<std::string> parts;
    for (std::size_t end = 0; (end = text.find(separator)) != std::string_view::npos;) {
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end + separator.size());
    }
    parts.emplace_back(text);
    return parts;
}

inline std::vector<TableRow> ReadTable(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string line;
    if (!std::getline(file, line)) throw std::runtime_error("no table " + path);
    const std::vector<std::string> columns = SplitAt(line, "\t");
    std::vector<TableRow> rows;
    while (std::getline(file, line)) {
        const std::vector<std::string> fields = SplitAt(line, "\t");
        if (fields.size() != columns.size()) throw std::runtime_error(path + ": bad row: " + line);
        TableRow& row = rows.emplace_back();
        for (std::size_t i = 0; i < fields.size(); ++i) row[columns[i]] = fields[i];
    }
    return rows;
}

inline std::string Unescape(std::string_view field) {
    constexpr std::string_view kLetters = "rnt\\", kBytes = "\r\n\t\\";
    std::string bytes;
    for (std::size_t at = 0; at < field.size(); ++at) {
        if (field[at] != '\\') {
            bytes += field[at];
        } else if (field.at(++at) == 'x') {
            bytes += static_cast<char>(std::stoi(std::string(field.substr(at + 1, 2)), nullptr, 16));
            at += 2;
        } else {
            bytes += kBytes.at(kLetters.find(field[at])); // throws on an unknown one
        }
    }
    return bytes;
}

} // namespace korlan::test
