// The lists of what earlier runs installed, kept in the suite INI file: service packs ("LIVEUPDATEFROMWEB") and
// simulation-model archives ("LIVEUPDATESPCFILEFROMWEB"). Key "Number" counts, keys "1" to "n" hold the entries.
#pragma once

#include <string>

namespace korlan {

// Reads both lists into Tables.AppliedSPList and AppliedSPCList (a missing key is an empty entry; no more entries than
// the file has bytes, whatever "Number" says), then the suite's version. Called at the start of every search.
void IniWebR();

// After a run without failed files: records every pack that this search has read and all of whose marked members the
// run installed, and flags it. A write that fails shows its warning; the rest is still tried.
void UpdateIniFile();

// After a search that leaves nothing to install: records every pack that it has read.
void UpdateIniNoUpdatesFound();

// Adds an archive of simulation models to its list. A file that refuses is passed over without a message.
void RecordModels(const std::string& archiveName);

} // namespace korlan
