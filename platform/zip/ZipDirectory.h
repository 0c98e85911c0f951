// The directory of a zip archive: names as text whatever the locale, zero characters in them included, and times that
// mean the same instant at every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korlan {

struct ZipMember {
    // NoFile: a link, a device, a pipe, a folder that holds data, a second entry for data that another has.
    // Damaged: its entry or its header cannot be read, or its data reaches into the directory.
    enum class Kind { File, Folder, NoFile, Damaged };
    Kind kind = Kind::Damaged;
    std::string name;          // as text; separators as they are stored
    std::uint64_t header = 0;  // where its local header begins in the file
    std::uint64_t data = 0;    // where its packed data begins
    std::uint64_t size = 0;    // bytes, as the archive says; not to be trusted
    std::uint64_t packed = 0;  // likewise
    std::int64_t modified = 0; // seconds since 1970, UTC
    bool inUtc = false;        // the archive says so itself; else it is the local time of whoever reads it
    std::uint32_t method = 0;  // of packing, as the format numbers it
    std::uint32_t checkSum = 0;
    bool encrypted = false;
    std::uint32_t aesStrength = 0; // 1 to 3 when it is AES that encrypts it
    bool executable = false;       // its maker marked it as a program
    std::string entry;             // in the directory, as it stands, without its comment
};

// In the order of the directory.
using ZipMembers = std::vector<ZipMember>;

// Gives the bytes of the file from `offset` on: `count` of them, or as many as there are.
using ReadBytes = std::function<std::string(std::uint64_t offset, std::size_t count)>;

// Nothing when the file has no directory of a zip archive. An entry that is damaged ends the reading and stands as the
// last member.
std::optional<ZipMembers> ReadZipDirectory(std::uint64_t fileSize, const ReadBytes& read);

// The instant of a DOS date and time in the local time zone. Of a time that came twice the first is taken; one that the
// clock skipped counts on from before the change.
std::int64_t InstantOfDosTime(std::uint32_t date, std::uint32_t time);

// Archives made on Windows hold both.
inline bool IsZipSeparator(char character) {
    return character == '/' || character == '\\';
}

} // namespace korlan
