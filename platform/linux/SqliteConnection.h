// One open SQLite file: prepared statements, and every failure of SQLite as a RuntimeError. Statements read and write
// tables, nothing else: what runs by the file's own word (views, triggers) is refused.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace korlan {

class SqliteStatement {
public:
    SqliteStatement(sqlite3* connection, const std::string& sql); // one statement; raises what SQLite says of it
    bool Step();                                                  // false at the end
    void Reset();
    sqlite3_stmt* Handle() const { return statement_.get(); }

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    sqlite3* connection_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

class SqliteConnection {
public:
    SqliteConnection(const std::string& hostPath, bool exclusive, bool readOnly);
    ~SqliteConnection(); // keeps what is gathered
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;

    sqlite3* Handle() const { return connection_; }
    void Run(const std::string& sql);                  // all of its statements
    SqliteStatement& Prepared(const std::string& sql); // kept for the next time, reset
    bool InTransaction() const { return sqlite3_get_autocommit(connection_) == 0; }
    // Gives the statement's next row, false at the end. `steps` is what it may still take of SQLite's smallest steps,
    // which bounds what a damaged file can cost; beyond it 3343.
    bool NextRow(SqliteStatement& statement, std::int64_t& steps);
    std::size_t FileSize() const { return fileSize_; }
    void Gather(); // begins to gather changes, unless a transaction is open
    void WriteGathered();

private:
    sqlite3* connection_ = nullptr;
    std::size_t fileSize_ = 0; // when it was opened
    std::map<std::string, SqliteStatement> prepared_;
    bool gathering_ = false;
};

// A value as the program's text: NULL is empty, reals are in plain decimal, blobs in hex.
std::string SqliteText(sqlite3_stmt* statement, int column);

// The statement in SQLite's own dialect.
std::string SqliteDialect(std::string_view sql);

} // namespace korlan
