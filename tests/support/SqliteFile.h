// Makes SQLite databases for tests.
#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace korlan::test {

// Runs statements on the database file at a host path, which is made when missing.
inline void RunSql(const std::string& file, const std::string& sql) {
    sqlite3* database = nullptr;
    char* message = nullptr;
    const bool failed = sqlite3_open(file.c_str(), &database) != SQLITE_OK ||
                        sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK;
    const std::string text = message ? message : "";
    sqlite3_free(message);
    sqlite3_close(database);
    if (failed) throw std::runtime_error(file + ": " + text);
}

// The SQL of a catalogue: each row is name, designation, size, date, archive.
inline std::string CatalogueSql(const std::vector<std::vector<std::string>>& rows) {
    std::string sql =
        "CREATE TABLE Files (FileName TEXT, FilePath TEXT, FileSize TEXT, Filedate TEXT, FileZipName TEXT);";
    for (const auto& row : rows) {
        sql += "INSERT INTO Files VALUES (";
        for (std::size_t i = 0; i < row.size(); ++i) sql += (i ? ",'" : "'") + row[i] + "'";
        sql += ");";
    }
    return sql;
}

} // namespace korlan::test
