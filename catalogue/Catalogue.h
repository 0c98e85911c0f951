// The update catalogue: the master database lists service packs, each service pack's database lists files and folders.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Reads the master catalogue, fetches every service pack not yet applied, and rebuilds FileArray, FileArraySP and
// NewFolderArray. `cataloguePath` holds the last pack's local path afterwards. `result`: 1 when the search ran to its
// end or was cancelled, 0 when an error stopped it (the tables keep what was merged so far), untouched when there is no
// master catalogue. Yields. A pack that cannot be fetched is passed over unless an older copy lies in the temporary
// folder.
void GetLatestFiles(std::string& cataloguePath, std::int32_t& result);

// Merges one service pack's database into the tables as the pack at `spIndex` of FileArraySP. A missing file merges
// nothing; a database that cannot be read raises its error.
void GetFilesInsideSP(const std::string& spCataloguePath, std::int32_t spIndex);

// Copies the marks of FileArray onto the first member of that archive name in every pack.
void UpdateFileArraySP();

} // namespace korlan
