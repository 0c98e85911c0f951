// SQLite files as databases of the program, read and written.
// - A password in the connect string is accepted and ignored: plain SQLite files have none.
// - Statements may be in the dialect of the engine that the program's statements were written for: "DELETE * FROM" is
//   understood, and text literals compare without regard to case (of ASCII letters), as that engine compares.
// - Rows written through a recordset are gathered in one transaction until the recordset or its database closes, a
//   transaction of the program begins, or a statement is executed. What is gathered stays when the program goes on
//   after an error, and is lost when the process is killed.
// - A file that somebody else has locked raises 3260 after a quarter of a second. Journal mode: the file's own.
#pragma once

#include "platform/Database.h"

namespace korlan {

bool LooksLikeSqlite(std::string_view startOfFile); // 16 bytes suffice

// Raises 3343 when the file is damaged. `exclusive` keeps everybody else out while the database is open.
std::unique_ptr<Database> OpenSqliteDatabase(const std::string& hostPath, bool exclusive, bool readOnly);

} // namespace korlan
