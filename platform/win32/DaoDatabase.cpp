#include "platform/win32/DaoDatabase.h"

#include "platform/DatabaseError.h"
#include "platform/win32/Automation.h"

namespace korlan {
namespace {

class DaoRecordset : public Recordset {
public:
    explicit DaoRecordset(AutomationObject rows) : rows_(std::move(rows)) {}
    ~DaoRecordset() override {
        try {
            if (open_) rows_.Call(L"Close");
        } catch (const RuntimeError&) { // nobody asks any more
        }
    }

    bool Eof() const override { return rows_.Call(L"EOF").Text() == "True"; }
    std::string Text(const std::string& column) const override { return Field(column).Call(L"Value").Text(); }
    void MoveNext() override { rows_.Call(L"MoveNext"); }
    void AddNew() override { rows_.Call(L"AddNew"); }
    void Edit() override { rows_.Call(L"Edit"); }
    void SetText(const std::string& column, const std::string& value) override {
        Field(column).Put(L"Value", Variant(value));
    }
    void SetNumber(const std::string& column, std::int32_t value) override {
        Field(column).Put(L"Value", Variant(value));
    }
    void Update() override { rows_.Call(L"Update"); }
    void Close() override {
        open_ = false;
        rows_.Call(L"Close");
    }

private:
    AutomationObject Field(const std::string& column) const {
        const AutomationObject fields(rows_.Call(L"Fields"));
        return AutomationObject(fields.Call(L"Item", column));
    }

    AutomationObject rows_;
    bool open_ = true;
};

// Transactions are the engine's, of all databases it has open; this program has one.
class DaoDatabase : public Database {
public:
    DaoDatabase(AutomationObject engine, AutomationObject database)
        : engine_(std::move(engine)), database_(std::move(database)) {}
    ~DaoDatabase() override {
        try {
            if (inTransaction_) engine_.Call(L"Rollback");
            database_.Call(L"Close");
        } catch (const RuntimeError&) { // nobody asks any more
        }
    }

    bool Updatable() const override { return database_.Call(L"Updatable").Text() == "True"; }
    std::unique_ptr<Recordset> OpenRecordset(const std::string& tableOrSql) override {
        return std::make_unique<DaoRecordset>(AutomationObject(database_.Call(L"OpenRecordset", tableOrSql)));
    }
    void Execute(const std::string& sql) override { database_.Call(L"Execute", sql); }
    void BeginTrans() override {
        engine_.Call(L"BeginTrans");
        inTransaction_ = true;
    }
    void CommitTrans() override { EndTransaction(L"CommitTrans"); }
    void Rollback() override { EndTransaction(L"Rollback"); }

private:
    void EndTransaction(const wchar_t* how) {
        if (!inTransaction_) throw RuntimeError(kErrNoTransaction, "No transaction has begun");
        inTransaction_ = false;
        engine_.Call(how);
    }

    AutomationObject engine_, database_;
    bool inTransaction_ = false;
};

} // namespace

std::unique_ptr<Database> OpenDaoDatabase(const std::string& path, bool exclusive, bool readOnly,
                                          const std::string& connect) {
    auto engine = AutomationObject::Create({L"DAO.DBEngine.35", L"DAO.DBEngine.36", L"DAO.DBEngine.120"});
    if (!engine) throw RuntimeError(kErrCannotOpenDatabase, "No database engine is installed");
    AutomationObject database(engine.Call(L"OpenDatabase", path, exclusive, readOnly, connect));
    return std::make_unique<DaoDatabase>(std::move(engine), std::move(database));
}

} // namespace korlan
