// Simulation models in SPC files: an installed one is never replaced, the new models are appended to it. Bytes stay
// bytes. INI values are written without a message when the file refuses.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Installs the SPC file of FileArray entry `index`: appends its models to the installed file, or extracts it where none
// is installed. In every case, a missing archive and a failed extraction included (both change no file and give no
// message), its archive joins AppliedSPCList and the INI file, and success = 1. Errors while reading the new file or
// appending go to the caller; then nothing is recorded and `success` is left alone. May yield and show a box
// (extraction).
void UpdateSPCFile(std::int32_t& success, std::int32_t index);

// Appends four empty lines and the whole of `newFile` to `targetFile`: in one write, but for a file above 16 MB, so a
// process killed before it leaves the user's own models as they were. Leaves `success` alone. Errors of the files go to
// the caller, and the target has its old length again.
void CopyContentsToSPC(std::int32_t& success, const std::string& newFile, const std::string& targetFile);

// Asks the suite to rebuild its model index. result = 0 when the request is written, 1 when it could not be.
void ReCreateMDBFileforSPC(std::int32_t& result);

void LiveUpdateStatusSPC(); // turns the spinner and shows it on the message line

} // namespace korlan
