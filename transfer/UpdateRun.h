// The update run: fetches the archive of every chosen file, then installs them one by one.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Download pass from ResumeIndex (IsRetry 1) or the first record (IsRetry 0), then the install pass over every record
// whose archive is there. 0 normally, also when a transfer failed (DownloadFailed = 1, Retry shown, ResumeIndex at the
// record); 1 when a run-time error ended it, with DownloadFailed = 1 and Retry shown. Fills Tables.UpdatedFiles afresh
// and sets NewUpdaterLoaded. Yields; shows boxes.
std::int32_t UpdateFilesFromWeb();

// Retry instead of Update, and the message why.
void ShowRetry(const std::string& message);

// Makes the folders of the catalogue's folder list below the program folder. The first failure ends it quietly.
void CreateNewFolders();

// Deletes every file in the temporary folder, and this run's archives in folders below it. A missing folder is passed
// over.
void CleanUpTemporaryFiles();

} // namespace korlan
