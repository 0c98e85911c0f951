#include "platform/linux/SqliteConnection.h"

#include "platform/DatabaseError.h"
#include "platform/FieldNames.h"
#include "platform/SqlText.h"
#include "platform/jet/ValueText.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace korlan {

namespace {

constexpr int kBusyMilliseconds = 250;
constexpr int kStepsAtOnce = 1000;
constexpr std::size_t kMostValue = std::size_t{1} << 28;
constexpr std::size_t kLeastValue = std::size_t{1} << 20; // a value that any file may hold

std::int32_t NumberOf(int code, std::string_view message) {
    switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED: return kErrDatabaseLocked;
    case SQLITE_READONLY: return kErrReadOnlyDatabase;
    case SQLITE_CONSTRAINT: return kErrDuplicateValue;
    case SQLITE_FULL: return kErrDiskIsFull;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
    case SQLITE_PERM: return kErrCannotOpenDatabase;
    case SQLITE_CORRUPT:
    case SQLITE_INTERRUPT: // more work than the file can hold
    case SQLITE_TOOBIG:
    case SQLITE_NOTADB: return kErrUnrecognizedFormat;
    case SQLITE_AUTH: return kErrOperationNotSupported;
    case SQLITE_ERROR:
        if (message.starts_with("no such table")) return kErrNoSuchTable;
        if (message.starts_with("no such column")) return kErrMissingName;
        return kErrSqlSyntax;
    default: return kErrDatabase;
    }
}

// `from` is the view or trigger that wants it, null for the program's own statements.
int AllowTables(void*, int action, const char*, const char*, const char*, const char* from) {
    constexpr std::array kAllowed = {SQLITE_SELECT, SQLITE_READ,   SQLITE_INSERT,
                                     SQLITE_UPDATE, SQLITE_DELETE, SQLITE_TRANSACTION};
    return from == nullptr && std::ranges::find(kAllowed, action) != kAllowed.end() ? SQLITE_OK : SQLITE_DENY;
}

int TakeSteps(void* steps) { // not 0 ends the statement
    return (*static_cast<std::int64_t*>(steps) -= kStepsAtOnce) < 0 ? 1 : 0;
}

void Check(sqlite3* connection, int code) {
    if (code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE) return;
    const std::string message = sqlite3_errmsg(connection);
    throw RuntimeError(NumberOf(code, message), message);
}

} // namespace

SqliteStatement::SqliteStatement(sqlite3* connection, const std::string& sql) : connection_(connection) {
    sqlite3_stmt* prepared = nullptr;
    const char* rest = nullptr;
    Check(connection, sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &prepared, &rest));
    statement_.reset(prepared);
    // Names from outside stand in statements as they are: one that ends its own must not begin another.
    if (sql.find_first_not_of(" \t\r\n", static_cast<std::size_t>(rest - sql.data())) != std::string::npos)
        throw RuntimeError(kErrTextBehindStatement, "Characters found after end of SQL statement");
}

bool SqliteStatement::Step() {
    const int code = sqlite3_step(statement_.get());
    Check(connection_, code);
    return code == SQLITE_ROW;
}

void SqliteStatement::Reset() {
    sqlite3_reset(statement_.get()); // its result is that of the last step, which was told then
    sqlite3_clear_bindings(statement_.get());
}

SqliteConnection::SqliteConnection(const std::string& hostPath, bool exclusive, bool readOnly) {
    const int access = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE; // neither creates a file
    const int code = sqlite3_open_v2(hostPath.c_str(), &connection_, access, nullptr);
    try {
        Check(connection_, code);
        sqlite3_busy_timeout(connection_, kBusyMilliseconds);
        // The file may come from the network: what its schema says is not to be trusted.
        sqlite3_db_config(connection_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(connection_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        std::error_code error;
        fileSize_ = static_cast<std::size_t>(std::filesystem::file_size(hostPath, error));
        sqlite3_limit(connection_, SQLITE_LIMIT_LENGTH,
                      static_cast<int>(std::clamp(fileSize_, kLeastValue, kMostValue)));
        if (exclusive) Run("PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT");
        sqlite3_set_authorizer(connection_, AllowTables, nullptr);
        Run("SELECT 1 FROM sqlite_master LIMIT 1"); // opening reads nothing; this tells a file that is no database
    } catch (...) {
        sqlite3_close(connection_);
        throw;
    }
}

SqliteConnection::~SqliteConnection() {
    if (gathering_) sqlite3_exec(connection_, "COMMIT", nullptr, nullptr, nullptr);
    prepared_.clear();
    sqlite3_close_v2(connection_);
}

void SqliteConnection::Run(const std::string& sql) {
    Check(connection_, sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr));
}

SqliteStatement& SqliteConnection::Prepared(const std::string& sql) {
    auto found = prepared_.find(sql);
    if (found == prepared_.end()) found = prepared_.emplace(sql, SqliteStatement(connection_, sql)).first;
    found->second.Reset();
    return found->second;
}

bool SqliteConnection::NextRow(SqliteStatement& statement, std::int64_t& steps) {
    const auto stopCounting = [](sqlite3* connection) { sqlite3_progress_handler(connection, 0, nullptr, nullptr); };
    const std::unique_ptr<sqlite3, decltype(stopCounting)> counting(connection_, stopCounting);
    sqlite3_progress_handler(connection_, kStepsAtOnce, TakeSteps, &steps);
    return statement.Step();
}

void SqliteConnection::Gather() {
    if (InTransaction()) return;
    Run("BEGIN");
    gathering_ = true;
}

void SqliteConnection::WriteGathered() {
    if (!gathering_) return;
    if (InTransaction()) Run("COMMIT"); // a full disk may have ended it already
    gathering_ = false;                 // only now: a commit that meets a lock is tried again later
}

std::string SqliteText(sqlite3_stmt* statement, int column) {
    std::string text;
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL: break;
    case SQLITE_FLOAT: jet::AppendRealText(text, sqlite3_column_double(statement, column)); break;
    case SQLITE_BLOB: {
        const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
        jet::AppendHexText(text, std::string_view(bytes, size));
        break;
    }
    default: { // text, and whole numbers as SQLite writes them
        const unsigned char* bytes = sqlite3_column_text(statement, column);
        const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
        text.assign(reinterpret_cast<const char*>(bytes), size);
    }
    }
    return text;
}

std::string SqliteDialect(std::string_view sql) {
    std::string translated;
    bool afterDelete = false;
    for (const SqlToken& token : SplitSql(sql)) {
        if (afterDelete && token.text == "*") continue;
        translated += token.text;
        if (token.kind == SqlKind::Text) translated += " COLLATE NOCASE";
        if (token.kind != SqlKind::Space) afterDelete = SameName(token.text, "DELETE");
    }
    return translated;
}

} // namespace korlan
