// The data of one archive member: read in blocks, deciphered, unpacked, and checked at its end.
#pragma once

#include "platform/win32/FileHandle.h"
#include "platform/zip/ZipDirectory.h"

#include <zlib.h>

#include <array>
#include <cstdint>
#include <string>

namespace korlan {

// Stored and deflated members are read, enciphered ones by the archive format's own cipher only.
bool MethodIsKnown(std::uint32_t method);

class MemberData {
public:
    MemberData(const FileHandle& file, const ZipMember& member, const std::string& password);
    MemberData(const MemberData&) = delete;
    MemberData& operator=(const MemberData&) = delete;
    ~MemberData();

    // The next bytes; "" at the end or when the data is damaged.
    std::string_view Next();
    bool Whole() const; // every byte came, and their check sum is right

private:
    bool Fill();
    char Decipher(char byte);
    void Turn(unsigned char plain);

    const FileHandle& file_;
    const ZipMember& member_;
    std::uint64_t at_, end_; // packed bytes still in the file
    std::array<std::uint32_t, 3> keys_{0x12345678, 0x23456789, 0x34567890};
    std::string packed_;
    std::array<char, 65536> unpacked_;
    z_stream stream_{};
    std::uint64_t written_ = 0;
    std::uint32_t sum_ = 0;
    bool ended_ = false, damaged_ = false;
};

} // namespace korlan
