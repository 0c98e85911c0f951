// Extraction of one whole archive into one folder through the zip library: its option and callback records are filled
// here and its questions answered. Not re-entrant.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace korlan {

struct ZipModule {
    std::string ZipFileName;                    // outlives the call: an empty argument takes the one before
    std::string ExtractFolder;                  // likewise
    std::array<std::int16_t, 15> OptionFlags{}; // in the order of the library's record; never set
    std::string TextBuffer;                     // what the library printed during the last extraction, line feeds kept
    std::string ListText;                       // the members it listed, under headings
    std::int16_t SkipPassword = 0;              // 1 = the user gave no password: not asked again in this extraction
};

inline ZipModule modZip;

// Extracts the archive. `completed` is 1 when the library's call has returned, whatever it says of the archive, and 0
// after a run-time error; `result` is then what the library said, and after an error as it was. recordIndex is not
// used. An empty zipFile or folder stands for that of the call before. May show boxes: a file that is there, a
// password.
void Unzip(std::int32_t& completed, std::int32_t recordIndex, const std::string& zipFile, const std::string& folder,
           std::int32_t& result);

// Likewise; gives what the library said, nothing after a run-time error.
std::optional<std::int32_t> ExtractArchive(const std::string& zipFile, const std::string& folder);

// The library's call itself; returns its code.
std::int32_t VBUnzip(const std::string& zipFile, const std::string& folder,
                     const std::array<std::int16_t, 15>& optionFlags);

} // namespace korlan
