// Databases in the shape of DAO. The back end looks at the file and knows which kinds it can read and which of them it
// can write too. Any failure raises a RuntimeError of 3000 or above. Paths are Windows-form. Writing to what cannot be
// written raises 3027, a missing table 3078, a missing column 3265, a row past the last one 3021. All values read are
// text: NULL is empty, numbers are plain decimal, currency and decimals without trailing zeros, yes/no is
// "True"/"False", dates are D-M-YYYY,H:M:S. Column and table names match without regard to case.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace korlan {

class Recordset {
public:
    virtual ~Recordset() = default;
    virtual bool Eof() const = 0;
    virtual std::string Text(const std::string& column) const = 0; // of the current row
    virtual void MoveNext() = 0;
    // A new row, or changes of the current one, kept aside until Update writes them. Reading is of the stored row.
    virtual void AddNew() = 0;
    virtual void Edit() = 0;
    virtual void SetText(const std::string& column, const std::string& value) = 0;
    virtual void SetNumber(const std::string& column, std::int32_t value) = 0; // 16- and 32-bit values alike
    virtual void Update() = 0;
    virtual void Close() = 0;
};

class Database {
public:
    virtual ~Database() = default;      // closes; a transaction that was not committed is undone
    virtual bool Updatable() const = 0; // whether its rows can be written
    // A table's name or "SELECT * FROM" one, rows in the table's own order; WHERE clauses where Updatable.
    virtual std::unique_ptr<Recordset> OpenRecordset(const std::string& tableOrSql) = 0;
    virtual void Execute(const std::string& sql) = 0; // one statement; more raise 3142
    virtual void BeginTrans() = 0;
    virtual void CommitTrans() = 0;
    virtual void Rollback() = 0;
};

// connect: "" or ";pwd=" and the password. A file that has a password must get it (else 3031); other files take any.
// Never creates a file: a missing one raises 3024, one that is no database or is damaged 3343, a locked one 3260.
std::unique_ptr<Database> OpenDatabase(const std::string& path, bool exclusive, bool readOnly,
                                       const std::string& connect);

} // namespace korlan
