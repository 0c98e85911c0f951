// Copies the elements of one library file, one after the other, into another library through the suite's own library.
// Asks before it overwrites; a part's row in the part index is refreshed. The decisions are in
// docs/decisions/0012-suite-library.md.
#pragma once

#include "app/base/Table.h"
#include "platform/SuiteLibrary.h"

#include <cstdint>
#include <string>

namespace korlan {

struct LibraryElements {
    Table<std::string> names;
    LibraryHandle library = 0; // of the last FillItemsList; 0 or less = it could not be opened
};
inline LibraryElements Elements;

// Fills Elements with the names in a library file, none when it cannot be opened. A path that ends with exactly ".PART"
// is a part library, any other a symbol library. Errors of the suite's library go to the caller.
void FillItemsList(const std::string& libraryPath);

// Merges every element of the source into the target, by Flags.LibElementKind (one that is no kind does
// nothing). Both are full paths of existing files. An element that fails is reported and left; a
// library that cannot be opened, or Cancel at the overwrite question, ends the merge. Run-time errors end the merge of
// their element without a message. Shows boxes and the message line.
void SaveToLib(const std::string& sourceLibrary, const std::string& targetLibrary);

// What an answer of the overwrite question means: 1 Cancel, -1 Yes, 0 No, 8 for the code 8, 0 for anything else.
std::int32_t OverwriteChoice(std::int32_t boxAnswer);

// Shows one box for a failed step; an unknown code shows "Unknown Error". `name` is an element or a library.
void ShowLibError(std::int32_t code, const std::string& name);

} // namespace korlan
