// The catalogue's files against the installed ones.
#pragma once

#include <string>

namespace korlan {

// Judges every record of FileArray: UpdateFlag = 1 when no readable file is at its place or the one there is older than
// the catalogue's by the minute. Marked records get their LocalFolder. Only the first record for an installed path is
// judged; a model archive installed before is never marked again. Ends with UpdateFileArraySP. Any run-time error ends
// the pass quietly: records not yet judged stay unmarked, the failing one keeps its interim mark but no folder, and the
// packs are not marked.
void CompareUpdatableFiles();

// The installed file's last-write time as a date text; "" after a failure, which a message box has told.
std::string GetFileStamp(const std::string& path);

} // namespace korlan
