// Zip archives byte by byte, so that a test can have names, times, check sums and attributes that no archive program
// would write. Members are stored unpacked.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korlan::test {

// A DOS date and time as the format packs them.
constexpr std::uint32_t DosDate(int year, int month, int day) {
    return static_cast<std::uint32_t>((year - 1980) << 9 | month << 5 | day);
}
constexpr std::uint32_t DosTime(int hour, int minute, int second) {
    return static_cast<std::uint32_t>(hour << 11 | minute << 5 | second / 2);
}

struct ZipEntry {
    std::string name; // bytes as they stand
    std::string data;
    std::uint32_t date = DosDate(2003, 6, 15), time = DosTime(12, 30, 40);
    std::optional<std::int32_t> extendedTime = std::nullopt; // UTC seconds, in the local header and in the directory
    std::uint32_t maker = 0;                                 // high byte: 0 DOS, 3 Unix, 11 NTFS; low byte: version
    std::uint32_t attributes = 0;                            // Unix: the mode in the upper half
    std::uint32_t flags = 0, method = 0;
    std::uint32_t checkSumError = 0; // added to the right check sum
    std::uint32_t sizeError = 0;     // added to the right size before packing
};

class ZipWriter {
public:
    ZipWriter& Add(const ZipEntry& entry) {
        const std::string stamp =
            entry.extendedTime ? Short(0x5455) + Short(5) + "\x01" + Long(Bits(*entry.extendedTime)) : std::string();
        const std::string common = Short(entry.flags) + Short(entry.method) + Short(entry.time) + Short(entry.date) +
                                   Long(CheckSum(entry.data) + entry.checkSumError) + Long(Size(entry.data)) +
                                   Long(Size(entry.data) + entry.sizeError) + Short(Size(entry.name));
        entry_ = "PK\1\2" + Short(entry.maker) + Short(20) + common + Short(Size(stamp)) + Short(0) + Short(0) +
                 Short(0) + Long(entry.attributes) + Long(Size(members_)) + entry.name + stamp;
        directory_ += entry_;
        members_ += "PK\3\4" + Short(20) + common + Short(Size(stamp)) + entry.name + stamp + entry.data;
        ++count_;
        return *this;
    }

    ZipWriter& RepeatEntry() { // a second one for the same data
        directory_ += entry_;
        ++count_;
        return *this;
    }

    std::string Bytes(const std::string& comment = {}) const {
        return members_ + directory_ + "PK\5\6" + Long(0) + Short(count_) + Short(count_) + Long(Size(directory_)) +
               Long(Size(members_)) + Short(Size(comment)) + comment;
    }

    static std::uint32_t CheckSum(std::string_view bytes) {
        std::uint32_t sum = 0xFFFFFFFF;
        for (const char byte : bytes) {
            sum ^= static_cast<unsigned char>(byte);
            for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
        }
        return ~sum;
    }
    static std::string Short(std::uint32_t number) {
        return {static_cast<char>(number & 255), static_cast<char>(number >> 8 & 255)};
    }
    static std::string Long(std::uint32_t number) { return Short(number & 0xFFFF) + Short(number >> 16); }

private:
    static std::uint32_t Bits(std::int32_t number) { return static_cast<std::uint32_t>(number); }
    static std::uint32_t Size(std::string_view bytes) { return static_cast<std::uint32_t>(bytes.size()); }

    std::string members_, directory_, entry_;
    std::uint32_t count_ = 0;
};

} // namespace korlan::test
