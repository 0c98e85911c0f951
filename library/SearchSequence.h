// The user's search sequences: which libraries the suite searches, in which order, and whether each takes part. Four
// kinds of library, for each a list of names (a "sequence") and a list of names with flags, all in the suite INI file.
// Lists count from 1, names match without regard to case and are stored in capitals when this program adds them.
#pragma once

#include "app/base/Table.h"
#include "catalogue/FileKinds.h"

#include <cstdint>
#include <string>

namespace korlan {

struct LibraryFlag {
    std::string name;
    std::int32_t flag = 0; // 1 = takes part in the search
};

struct SearchSequence {
    Table<std::string> names;
    Table<LibraryFlag> flags;
};

// One of the four, by kind; another kind raises 9. Filled by LoadSearchSequences, grown only by the procedures below.
SearchSequence& SequenceOf(std::int32_t kind);

// Reads all eight lists from the suite INI file; what they held is gone. The first empty value ends a list.
void LoadSearchSequences();

// The place of a part library in the part sequence. A library that is not there is added at the end, in both lists and
// their sections; that place stays valid for this run only. An INI file that cannot be written is passed over without a
// message: the lists in memory keep the name.
void GetSSQNum(const std::string& libraryName, std::int32_t& position);

// Adds a symbol, package or padstack library to the lists of its kind unless it is there. Any other kind, parts
// included, changes nothing. Unwritable INI file as above.
void UpdateLibSSQ(const std::string& libraryName, std::int32_t kind);

} // namespace korlan
