// Numbers of the database engine's own errors, as far as the back ends raise them.
#pragma once

#include "platform/RuntimeError.h"

namespace korlan {

enum DatabaseError : std::int32_t {
    kErrUpdateWithoutEdit = 3020,   // a value set or an update made without AddNew or Edit
    kErrNoCurrentRecord = 3021,     // past the last row
    kErrDuplicateValue = 3022,      // a key that is already there, or another rule of the table broken
    kErrDatabaseMissing = 3024,     // no such file
    kErrDiskIsFull = 3026,          // no room left
    kErrReadOnlyDatabase = 3027,    // the database or the object is read-only
    kErrBadPassword = 3031,         // not a valid password
    kErrNoTransaction = 3034,       // a transaction ended without having begun
    kErrRecordTooLarge = 3047,      // a row longer than a page holds, or of other columns
    kErrCannotOpenDatabase = 3051,  // the file cannot be opened
    kErrMissingName = 3061,         // a statement names a column that the table does not have
    kErrSqlSyntax = 3075,           // a statement that cannot be understood
    kErrNoSuchTable = 3078,         // no such table
    kErrTextBehindStatement = 3142, // more than one statement
    kErrTextTooLong = 3163,         // a text longer than its column
    kErrRecordDeleted = 3167,       // the row is no longer there
    kErrOperationNotSupported = 3251,
    kErrInvalidFieldType = 3259,   // a column of a type that cannot be read
    kErrDatabaseLocked = 3260,     // locked by somebody else
    kErrNoSuchColumn = 3265,       // no such column in a recordset
    kErrUnrecognizedFormat = 3343, // not a database, or a damaged one
    kErrNotInCodePage = 3349,      // a text that the database's code page cannot hold
};

} // namespace korlan
