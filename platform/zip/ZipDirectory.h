// The directory of a zip archive: names as text whatever the locale, zero characters in them included, and times that
// mean the same instant at every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace korlan {

struct ZipMember {
    std::string name;          // as text; separators as they are stored
    std::uint64_t size = 0;    // bytes, as the archive says; not to be trusted
    std::uint64_t packed = 0;  // likewise
    std::int64_t modified = 0; // seconds since 1970, UTC
    std::uint32_t method = 0;  // of packing, as the format numbers it
    std::uint32_t checkSum = 0;
    bool encrypted = false;
    bool special = false; // a link, a device, a pipe
    bool folder = false;  // marked as one; others end in a separator
};

// Members by the offset of their packed data in the file.
using ZipMembers = std::map<std::uint64_t, ZipMember>;

// Gives the bytes of the file from `offset` on: `count` of them, or as many as there are.
using ReadBytes = std::function<std::string(std::uint64_t offset, std::size_t count)>;

// Nothing when the file has no directory of a zip archive. A record that is damaged ends the reading; the members
// before it are there.
std::optional<ZipMembers> ReadZipDirectory(std::uint64_t fileSize, const ReadBytes& read);

// The instant of a DOS date and time in the local time zone. Of a time that came twice the first is taken; one that the
// clock skipped counts on from before the change.
std::int64_t InstantOfDosTime(std::uint32_t date, std::uint32_t time);

} // namespace korlan
