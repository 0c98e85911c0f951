// The index of all parts, Parts.abd in the installation's library folder: one row a part and library file in its table
// PartFields. Every operation opens its own connection and closes it; without the file (it is never made here) every
// operation does nothing, as with one that the back end cannot write. Texts go into the statements as they are: a quote
// in a name is not doubled. Each changes the index in one transaction, and waits for one that is locked, yielding.
#pragma once

#include "platform/Database.h"
#include "platform/SuiteLibrary.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace korlan {

inline std::chrono::milliseconds indexPatience{5000}; // after which an index still locked raises 3260

// Opens the index into `db`; one that `db` holds is closed first. Left as it was when the file cannot be opened for
// reading, empty when this back end cannot write it. Errors of the database go to the caller.
void InitDB(std::unique_ptr<Database>& db);

// Removes every row of a library file (bare name), unless the suite's library is not there to give new ones. Errors of
// the database go to the caller.
void UpdateLibDBDeleteFile(const std::string& libraryFileName);

// Adds a row for each part of the library file of that name in the library folder; a process killed in between leaves
// none of them. Its place in the search sequence is found, or the library is added there. Any error ends the operation
// without a message; rows added before it stay.
void UpdateLibDBAddFileElements(const std::string& libraryFileName);

// Both, in one transaction: whoever reads the index sees the old rows or the new ones. Errors of the database while
// deleting, and an index that stays locked, go to the caller and leave the old rows.
void UpdateLibDBReplaceFile(const std::string& libraryFileName);

// While it lives, a note in the library folder says that this library is being replaced and its rows are not. A process
// that ends in between leaves it there. A note that cannot be written costs nothing else, and an older one stays.
class ReplacementNote {
public:
    explicit ReplacementNote(const std::string& libraryFileName);
    ~ReplacementNote();
    ReplacementNote(const ReplacementNote&) = delete;
    ReplacementNote& operator=(const ReplacementNote&) = delete;

private:
    bool written_ = false;
};

// Replaces the rows of the library named by the note that an earlier process left there, and removes the note unless
// the index stays locked. Raises nothing, shows nothing.
void MakeUpForReplacement();

// Adds or refreshes the row of one part that the suite holds in memory. Any error ends the operation without a message.
void UpdateLibDB(const std::string& libraryPath, ElementHandle deviceHandle);

// Removes the row of one part; only the text behind the last "\" of the path counts. Errors of the database go to the
// caller.
void UpdateLibDBDeleteFromFile(const std::string& libraryPath, const std::string& partName);

} // namespace korlan
