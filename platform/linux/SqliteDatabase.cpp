#include "platform/linux/SqliteDatabase.h"

#include "platform/DatabaseError.h"
#include "platform/FieldNames.h"
#include "platform/SqlText.h"
#include "platform/jet/TableRows.h"
#include "platform/linux/SqliteConnection.h"

#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace korlan {

namespace {

constexpr std::int64_t kStepsOfAnyFile = 1'000'000;

std::string QuotedName(std::string_view name) {
    std::string quoted(1, '"');
    for (const char c : name) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + '"';
}

// A statement that gives rows. One of the form "SELECT * FROM table ..." also asks for the rows' numbers, by which they
// can be changed; where the table has none, or the statement joins several, its rows are read only.
struct Query {
    SqliteStatement statement;
    std::string table; // "" when rows cannot be written
    int firstColumn;   // 1 behind a row's number, else 0
};

Query PrepareQuery(sqlite3* connection, const std::string& tableOrSql) {
    std::string sql = tableOrSql;
    if (const auto table = WholeTableOf(tableOrSql)) sql = "SELECT * FROM " + QuotedName(*table);
    if (const auto parsed = ParseSelectAll(sql)) {
        const std::string numbered =
            "SELECT _rowid_, * FROM " + QuotedName(parsed->table) + ' ' + SqliteDialect(parsed->rest);
        try {
            return {SqliteStatement(connection, numbered), parsed->table, 1};
        } catch (const RuntimeError& error) {
            if (error.Number() != kErrMissingName && error.Number() != kErrSqlSyntax) throw;
        }
    }
    return {SqliteStatement(connection, SqliteDialect(sql)), "", 0};
}

class SqliteRecordset final : public Recordset {
public:
    SqliteRecordset(std::shared_ptr<SqliteConnection> connection, const std::string& tableOrSql)
        : connection_(std::move(connection)), query_(PrepareQuery(connection_->Handle(), tableOrSql)),
          names_(ColumnNames()), bytes_(connection_->FileSize()), steps_(kStepsOfAnyFile + 64 * FileSize()),
          hasRow_(NextRow()) {}
    ~SqliteRecordset() override {
        try {
            Close();
        } catch (const RuntimeError&) {
            // whoever wants to know closes the recordset
        }
    }

    bool Eof() const override { return !hasRow_; }
    std::string Text(const std::string& column) const override;
    void MoveNext() override;
    void AddNew() override { BeginChange(Change::Add); }
    void Edit() override { BeginChange(Change::Edit); }
    void SetText(const std::string& column, const std::string& value) override { Set(column, value); }
    void SetNumber(const std::string& column, std::int32_t value) override { Set(column, value); }
    void Update() override;
    void Close() override;

private:
    using Value = std::variant<std::string, std::int32_t>;
    enum class Change { None, Add, Edit };

    std::vector<std::string> ColumnNames() const;
    std::int64_t FileSize() const { return static_cast<std::int64_t>(connection_->FileSize()); }
    bool NextRow() { return connection_->NextRow(query_->statement, steps_); }
    void BeginChange(Change change);
    void Set(const std::string& column, Value value);
    std::string InsertSql() const;
    std::string UpdateSql() const;
    void RequireRow() const {
        if (!hasRow_) throw RuntimeError(kErrNoCurrentRecord, "No current record");
    }

    std::shared_ptr<SqliteConnection> connection_;
    std::optional<Query> query_; // until Close
    FieldNames names_;
    mutable jet::WorkBudget bytes_; // of text given; what a file says can be more than it holds
    std::int64_t steps_;
    bool hasRow_;
    Change change_ = Change::None;
    std::vector<std::pair<std::size_t, Value>> set_;     // of the change begun
    std::vector<std::pair<std::size_t, Value>> written_; // to the current row, which the statement gave before
};

std::vector<std::string> SqliteRecordset::ColumnNames() const {
    sqlite3_stmt* statement = query_->statement.Handle();
    std::vector<std::string> names;
    for (int i = query_->firstColumn; i < sqlite3_column_count(statement); ++i)
        names.emplace_back(sqlite3_column_name(statement, i));
    return names;
}

std::string SqliteRecordset::Text(const std::string& column) const {
    const std::size_t index = names_.Index(column);
    RequireRow();
    for (const auto& [changed, value] : written_) {
        if (changed != index) continue;
        const auto* text = std::get_if<std::string>(&value);
        return text != nullptr ? *text : std::to_string(std::get<std::int32_t>(value));
    }
    std::string text = SqliteText(query_->statement.Handle(), query_->firstColumn + static_cast<int>(index));
    bytes_.Spend(text.size());
    return text;
}

void SqliteRecordset::MoveNext() {
    RequireRow();
    change_ = Change::None;
    written_.clear();
    hasRow_ = NextRow();
}

void SqliteRecordset::BeginChange(Change change) {
    if (change == Change::Edit) RequireRow();
    if (!query_ || query_->table.empty())
        throw RuntimeError(kErrReadOnlyDatabase, "Cannot update. Database or object is read-only");
    change_ = change;
    set_.clear();
}

void SqliteRecordset::Set(const std::string& column, Value value) {
    if (change_ == Change::None)
        throw RuntimeError(kErrUpdateWithoutEdit, "Update or CancelUpdate without AddNew or Edit");
    const std::size_t index = names_.Index(column);
    std::erase_if(set_, [index](const auto& entry) { return entry.first == index; });
    set_.emplace_back(index, std::move(value));
}

std::string SqliteRecordset::InsertSql() const {
    const std::string start = "INSERT INTO " + QuotedName(query_->table);
    if (set_.empty()) return start + " DEFAULT VALUES";
    std::string columns, values;
    for (const auto& entry : set_) {
        columns.append(columns.empty() ? "" : ",").append(QuotedName(names_[entry.first]));
        values.append(values.empty() ? "?" : ",?");
    }
    return start + '(' + columns + ") VALUES (" + values + ')';
}

std::string SqliteRecordset::UpdateSql() const {
    std::string assignments;
    for (const auto& entry : set_)
        assignments.append(assignments.empty() ? "" : ",").append(QuotedName(names_[entry.first])).append("=?");
    return "UPDATE " + QuotedName(query_->table) + " SET " + assignments + " WHERE _rowid_=?";
}

void SqliteRecordset::Update() {
    if (change_ == Change::None)
        throw RuntimeError(kErrUpdateWithoutEdit, "Update or CancelUpdate without AddNew or Edit");
    const bool isEdit = change_ == Change::Edit;
    change_ = Change::None;
    if (isEdit && set_.empty()) return;
    connection_->Gather();
    SqliteStatement& statement = connection_->Prepared(isEdit ? UpdateSql() : InsertSql());
    int parameter = 0;
    for (const auto& entry : set_) {
        if (const auto* text = std::get_if<std::string>(&entry.second))
            sqlite3_bind_text(statement.Handle(), ++parameter, text->data(), static_cast<int>(text->size()),
                              SQLITE_STATIC);
        else
            sqlite3_bind_int(statement.Handle(), ++parameter, std::get<std::int32_t>(entry.second));
    }
    if (isEdit)
        sqlite3_bind_int64(statement.Handle(), ++parameter, sqlite3_column_int64(query_->statement.Handle(), 0));
    statement.Step();
    statement.Reset();
    if (!isEdit) return;
    if (sqlite3_changes(connection_->Handle()) == 0) throw RuntimeError(kErrRecordDeleted, "Record is deleted");
    written_.insert(written_.begin(), set_.begin(), set_.end()); // the latest first
}

void SqliteRecordset::Close() {
    if (!query_) return;
    query_.reset();
    hasRow_ = false;
    connection_->WriteGathered();
}

class SqliteDatabase final : public Database {
public:
    explicit SqliteDatabase(std::shared_ptr<SqliteConnection> connection) : connection_(std::move(connection)) {}

    bool Updatable() const override { return sqlite3_db_readonly(connection_->Handle(), "main") == 0; }
    std::unique_ptr<Recordset> OpenRecordset(const std::string& tableOrSql) override {
        return std::make_unique<SqliteRecordset>(connection_, tableOrSql);
    }
    void Execute(const std::string& sql) override {
        connection_->WriteGathered();
        SqliteStatement(connection_->Handle(), SqliteDialect(sql)).Step();
    }
    void BeginTrans() override {
        connection_->WriteGathered();
        connection_->Run("BEGIN");
    }
    void CommitTrans() override { EndTransaction("COMMIT"); }
    void Rollback() override { EndTransaction("ROLLBACK"); }

private:
    void EndTransaction(const std::string& how) {
        connection_->WriteGathered();
        if (!connection_->InTransaction())
            throw RuntimeError(kErrNoTransaction, "Commit or rollback without a transaction that has begun");
        connection_->Run(how);
    }

    std::shared_ptr<SqliteConnection> connection_;
};

} // namespace

bool LooksLikeSqlite(std::string_view startOfFile) {
    return startOfFile.starts_with(std::string_view("SQLite format 3\0", 16));
}

std::unique_ptr<Database> OpenSqliteDatabase(const std::string& hostPath, bool exclusive, bool readOnly) {
    return std::make_unique<SqliteDatabase>(std::make_shared<SqliteConnection>(hostPath, exclusive, readOnly));
}

} // namespace korlan
