// Files from the update server: the question whether one is there and how large it is, and the download itself.
// Both yield to the user interface. In an address every "#" goes out as "%23".
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Asks for status and headers of `url`; Cancel is not looked at. Shows a box, with the address as given but for a name
// and password in it, for three codes: 401 leaves size and exists alone, 403 sets size = 0, 404 sets size = 0 and
// exists = false; all three return 0. Any other code (or no answer) sets exists = true, size = the Content-Length in
// bytes and returns 1; a length that is missing or no number raises 13, one beyond 32 bits raises 6, both with size
// left alone.
std::int32_t GetWebFileInformation(const std::string& url, std::int32_t& size, bool& exists);

// Copies `url` to the file `saveAs`, replacing it, in blocks of 1024 bytes. No failure is shown or raised.
// done: 1 on completion, whatever the size; left alone on an error or Cancel, which leave a partial file.
// fileSize: the size expected in bytes; 0 = unknown, which shows no progress and counts as failed.
// fileName: label of the progress text. showStatus: not 0 turns the status line at every block.
// Flags.DownloadFailed: at the end of the data 0 when the last rounded percentage is 100, else 1; left alone by Cancel
// and by errors. Cancel ends any wait for the server.
void DownloadFile(const std::string& url, const std::string& saveAs, std::int32_t& done, std::int32_t fileSize,
                  const std::string& fileName, std::int32_t showStatus);

} // namespace korlan
