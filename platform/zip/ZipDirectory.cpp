#include "platform/zip/ZipDirectory.h"

#include "platform/TextEncoding.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <set>

namespace korlan {
namespace {

constexpr std::size_t kEndSize = 22, kEntrySize = 46, kLocalSize = 30, kLongestComment = 65535;
constexpr std::uint32_t kNoMethod = 0xFFFF; // packed by a method that nobody knows
constexpr std::string_view kEntryMark = "PK\1\2";
constexpr std::uint64_t kLargestDirectory = 64u << 20; // far above any archive of the update server

// --- Bytes -----------------------------------------------------------------------------------------------------------

// A little-endian number; bytes beyond the end count as 0.
std::uint64_t Number(std::string_view bytes, std::size_t at, std::size_t width) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < width && at + i < bytes.size(); ++i)
        number |= std::uint64_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    return number;
}

std::uint32_t Number32(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint32_t>(Number(bytes, at, 4));
}
std::uint32_t Number16(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint32_t>(Number(bytes, at, 2));
}

// The extra field of that kind; empty when there is none.
std::string_view ExtraField(std::string_view extra, std::uint32_t kind) {
    while (extra.size() >= 4) {
        const std::size_t length = std::min<std::size_t>(Number16(extra, 2), extra.size() - 4);
        if (Number16(extra, 0) == kind) return extra.substr(4, length);
        extra.remove_prefix(4 + length);
    }
    return {};
}

// --- Names -----------------------------------------------------------------------------------------------------------

// Code page 437 from 128 on.
constexpr std::u16string_view kCodePage437 = u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟"
                                             u"╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";
static_assert(kCodePage437.size() == 128);

std::string TextFromDosBytes(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        AppendUtf8(text, code < 128 ? char32_t{code} : char32_t{kCodePage437[code - 128u]});
    }
    return text;
}

// The check sum that the archives of this format use.
std::uint32_t CheckSum(std::string_view bytes) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~sum;
}

// True when a maker of that kind (high byte: system, low byte: version) stores names in the code page of DOS.
bool MakerUsesDosNames(std::uint32_t maker) {
    constexpr std::uint32_t kDos = 0, kOs2 = 6, kNtfs = 11;
    const std::uint32_t system = maker >> 8, version = maker & 0xFF;
    return system == kDos || system == kOs2 || (system == kNtfs && version == 50);
}

std::string NameAsText(std::string_view name, std::uint32_t maker, std::string_view extra) {
    const std::string_view unicode = ExtraField(extra, 0x7075); // version, check sum of the plain name, name
    if (unicode.size() > 5 && Number32(unicode, 1) == CheckSum(name) && IsValidUtf8(unicode.substr(5)))
        return std::string(unicode.substr(5));
    if (IsValidUtf8(name)) return std::string(name);
    return MakerUsesDosNames(maker) ? TextFromDosBytes(name) : TextFromCodePage(name);
}

// --- Times -----------------------------------------------------------------------------------------------------------

// What a clock shows, in seconds since it showed the beginning of 1970. Numbers beyond their range count on.
std::int64_t ClockSeconds(int year, int month, int day, int hour, int minute, int second) {
    using namespace std::chrono;
    const sys_days date = sys_days(std::chrono::year(year) / January / 1 + months(month - 1)) + days(day - 1);
    return seconds(date.time_since_epoch() + hours(hour) + minutes(minute) + seconds(second)).count();
}

std::int64_t LocalClockAt(std::int64_t instant) {
    const auto time = static_cast<std::time_t>(instant);
    const std::tm* const clock = std::localtime(&time);
    if (!clock) return instant;
    return ClockSeconds(clock->tm_year + 1900, clock->tm_mon + 1, clock->tm_mday, clock->tm_hour, clock->tm_min,
                        clock->tm_sec);
}

// The extended time stamp's last change, where the field has one.
std::optional<std::int64_t> ExtendedTime(std::string_view extra) {
    const std::string_view field = ExtraField(extra, 0x5455);
    if (field.size() < 5 || (field[0] & 1) == 0) return std::nullopt;
    return static_cast<std::int32_t>(Number32(field, 1));
}

// --- Records ---------------------------------------------------------------------------------------------------------

struct DirectoryPlace {
    std::uint64_t offset = 0, size = 0; // in the file
    std::uint64_t shift = 0;            // what offsets in the directory are short of those in the file
};

// The place that the end record at `at` of the file's tail speaks of; nothing when there is no directory.
std::optional<DirectoryPlace> PlaceOf(std::uint64_t tailBegin, std::string_view tail, std::size_t at,
                                      const ReadBytes& read) {
    std::uint64_t end = tailBegin + at;
    std::uint64_t size = Number32(tail, at + 12), offset = Number32(tail, at + 16);
    if (at >= 20 && tail.compare(at - 20, 4, "PK\6\7") == 0) { // a large archive has its numbers in a longer record
        const std::uint64_t longEnd = Number(tail, at - 20 + 8, 8);
        const std::string record = longEnd < end ? read(longEnd, 56) : std::string();
        if (record.size() == 56 && record.starts_with("PK\6\6")) {
            end = longEnd;
            size = Number(record, 40, 8);
            offset = Number(record, 48, 8);
        }
    }
    if (size > end || offset > end - size) return std::nullopt;
    if (size > 0 && read(end - size, kEntryMark.size()) != kEntryMark) return std::nullopt;
    return DirectoryPlace{end - size, size, end - size - offset};
}

// The last end record that has a directory: a comment behind it may hold its mark.
std::optional<DirectoryPlace> FindDirectory(std::uint64_t fileSize, const ReadBytes& read) {
    const auto tailSize = static_cast<std::size_t>(std::min<std::uint64_t>(fileSize, kEndSize + kLongestComment));
    const std::string tail = read(fileSize - tailSize, tailSize);
    std::optional<DirectoryPlace> place;
    for (std::size_t before = tail.size(); !place && before >= kEndSize;) {
        const std::size_t at = tail.rfind("PK\5\6", before - kEndSize);
        if (at == std::string::npos) break;
        place = PlaceOf(fileSize - tailSize, tail, at, read);
        before = at + kEndSize - 1;
    }
    return place;
}

// Fills in the sizes that do not fit 32 bits and returns the offset of the local header.
std::uint64_t ReadSizes(std::string_view entry, std::string_view extra, ZipMember& member) {
    std::string_view large = ExtraField(extra, 1);
    const auto sizeAt = [&](std::size_t at) {
        const std::uint64_t number = Number32(entry, at);
        if (number != 0xFFFFFFFF || large.size() < 8) return number;
        const std::uint64_t whole = Number(large, 0, 8);
        large.remove_prefix(8);
        return whole;
    };
    member.size = sizeAt(24);
    member.packed = sizeAt(20);
    return sizeAt(42);
}

// Makers on Unix keep the file's mode in the upper half of the attributes.
void ReadKind(std::uint32_t maker, std::uint32_t attributes, ZipMember& member) {
    constexpr std::uint32_t kUnix = 3, kTypeOfFile = 0170000, kRegularFile = 0100000, kFolder = 0040000,
                            kOwnerRuns = 0100, kDosFolder = 0x10;
    const std::uint32_t mode = maker >> 8 == kUnix ? attributes >> 16 : 0, type = mode & kTypeOfFile;
    const bool named = !member.name.empty() && IsZipSeparator(member.name.back());
    const bool folder = named || (type == 0 ? (attributes & kDosFolder) != 0 : type == kFolder);
    member.executable = (mode & kOwnerRuns) != 0;
    if (folder)
        member.kind = member.size == 0 ? ZipMember::Kind::Folder : ZipMember::Kind::NoFile;
    else
        member.kind = type == 0 || type == kRegularFile ? ZipMember::Kind::File : ZipMember::Kind::NoFile;
}

// How the data is packed, also below an encryption whose mark stands in place of the method.
void ReadMethod(std::string_view entry, std::string_view local, std::string_view localExtra, ZipMember& member) {
    constexpr std::uint32_t kAesMark = 99;
    member.method =
        Number16(entry, 10) == Number16(local, 8) ? Number16(entry, 10) : kNoMethod; // unpackers go by either
    if (member.method != kAesMark) return;
    const std::string_view aes = ExtraField(localExtra, 0x9901); // version, two letters, strength, method
    member.aesStrength = static_cast<std::uint32_t>(Number(aes, 4, 1));
    member.method = member.aesStrength >= 1 && member.aesStrength <= 3 ? Number16(aes, 5) : kNoMethod;
}

// The member of one directory entry. Its local header says where the data begins and has its own extra field.
ZipMember MemberOf(const ReadBytes& read, std::string_view entry, const DirectoryPlace& place) {
    const std::size_t nameSize = Number16(entry, 28);
    const std::string_view name = entry.substr(kEntrySize, nameSize), extra = entry.substr(kEntrySize + nameSize);
    ZipMember member;
    member.name = NameAsText(name, Number16(entry, 4), extra);
    member.header = ReadSizes(entry, extra, member) + place.shift;
    const std::string local = member.header < place.offset ? read(member.header, kLocalSize) : std::string();
    if (local.size() < kLocalSize || !local.starts_with("PK\3\4")) return member;
    const std::uint32_t localNameSize = Number16(local, 26), localExtraSize = Number16(local, 28);
    member.data = member.header + kLocalSize + localNameSize + localExtraSize;
    if (member.data > place.offset || member.packed > place.offset - member.data) return member;
    const std::string localExtra = read(member.data - localExtraSize, localExtraSize);

    ReadMethod(entry, local, localExtra, member);
    member.checkSum = Number32(entry, 16);
    member.encrypted = (Number16(entry, 8) & 1) != 0;
    auto modified = ExtendedTime(localExtra);
    if (!modified) modified = ExtendedTime(extra);
    member.inUtc = modified.has_value();
    member.modified = modified ? *modified : InstantOfDosTime(Number16(entry, 14), Number16(entry, 12));
    member.entry = entry;
    ReadKind(Number16(entry, 4), Number32(entry, 38), member);
    return member;
}

} // namespace

std::int64_t InstantOfDosTime(std::uint32_t date, std::uint32_t time) {
    const auto of = [](std::uint32_t bits) { return static_cast<int>(bits); };
    const std::int64_t wall = ClockSeconds(1980 + of(date >> 9), of(date >> 5 & 15), of(date & 31), of(time >> 11),
                                           of(time >> 5 & 63), of(time & 31) * 2);
    constexpr std::int64_t kDay = 86'400; // more than any zone is away from UTC
    const auto instantByOffsetAt = [&](std::int64_t about) { return wall - (LocalClockAt(about) - about); };
    const std::int64_t before = instantByOffsetAt(wall - kDay), after = instantByOffsetAt(wall + kDay);
    return before == after || LocalClockAt(before) == wall || LocalClockAt(after) != wall ? before : after;
}

std::optional<ZipMembers> ReadZipDirectory(std::uint64_t fileSize, const ReadBytes& read) {
    const auto place = FindDirectory(fileSize, read);
    if (!place || place->size > kLargestDirectory) return std::nullopt;

    const std::string directory = read(place->offset, static_cast<std::size_t>(place->size));
    std::string_view rest = directory;
    ZipMembers members;
    std::set<std::uint64_t> headers;
    while (!rest.empty() && !rest.starts_with("PK\5\5")) { // a signature of the whole
        const std::size_t length = kEntrySize + Number16(rest, 28) + Number16(rest, 30) + Number16(rest, 32);
        if (!rest.starts_with(kEntryMark) || length > rest.size()) {
            members.emplace_back();
            break;
        }
        members.push_back(MemberOf(read, rest.substr(0, length - Number16(rest, 32)), *place));
        ZipMember& member = members.back();
        if (member.kind == ZipMember::Kind::File && !headers.insert(member.header).second)
            member.kind = ZipMember::Kind::NoFile;
        rest.remove_prefix(length);
    }
    return members;
}

} // namespace korlan
