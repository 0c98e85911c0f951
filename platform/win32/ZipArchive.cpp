// The members of an archive: read in blocks, deciphered, unpacked, and checked at their end.
#include "platform/RuntimeError.h"
#include "platform/ZipLibrary.h"
#include "platform/win32/AesCipher.h"
#include "platform/win32/FileHandle.h"
#include "platform/zip/ZipHost.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <optional>

namespace korlan {
namespace {

constexpr std::uint32_t kStored = 0, kDeflated = 8;
constexpr std::uint64_t kCipherHeader = 12; // bytes before the data of a member enciphered the old way

std::uint32_t TurnSum(std::uint32_t sum, unsigned char byte) {
    return static_cast<std::uint32_t>(get_crc_table()[(sum ^ byte) & 0xFF]) ^ sum >> 8;
}

class HostMemberData : public MemberData {
public:
    HostMemberData(const FileHandle& file, const ZipMember& member, const std::string& password);
    HostMemberData(const HostMemberData&) = delete;
    HostMemberData& operator=(const HostMemberData&) = delete;
    ~HostMemberData() override { inflateEnd(&stream_); }

    std::string_view Next() override;
    bool Whole() const override { return ended_ && !damaged_; }

private:
    std::string Take(std::uint64_t count); // of the packed bytes
    bool Fill();
    bool CheckEnd();
    char Decipher(char byte);
    void Turn(unsigned char plain);

    const FileHandle& file_;
    const ZipMember& member_;
    std::uint64_t at_, end_; // packed bytes still in the file
    std::array<std::uint32_t, 3> keys_{0x12345678, 0x23456789, 0x34567890};
    std::optional<AesCipher> aes_;
    std::string packed_;
    std::array<char, 65536> unpacked_;
    z_stream stream_{};
    std::uint32_t sum_ = 0;
    bool ended_ = false, damaged_ = false;
};

HostMemberData::HostMemberData(const FileHandle& file, const ZipMember& member, const std::string& password)
    : file_(file), member_(member), at_(member.data), end_(member.data + member.packed) {
    damaged_ = inflateInit2(&stream_, -MAX_WBITS) != Z_OK;
    if (member.aesStrength != 0) {
        aes_.emplace(member.aesStrength, Take(AesCipher::HeadSize(member.aesStrength)), password);
        damaged_ = damaged_ || !aes_->Opened() || end_ - at_ < AesCipher::kSealSize;
        end_ -= AesCipher::kSealSize;
    } else if (member.encrypted) {
        for (const char c : password) Turn(static_cast<unsigned char>(c));
        for (const char c : Take(kCipherHeader)) Decipher(c);
    }
}

// The archive format's own cipher, as its public description has it.
void HostMemberData::Turn(unsigned char plain) {
    keys_[0] = TurnSum(keys_[0], plain);
    keys_[1] = (keys_[1] + (keys_[0] & 0xFF)) * 134775813 + 1;
    keys_[2] = TurnSum(keys_[2], static_cast<unsigned char>(keys_[1] >> 24));
}

char HostMemberData::Decipher(char byte) {
    const std::uint32_t key = (keys_[2] | 2) & 0xFFFF;
    const auto plain = static_cast<unsigned char>(static_cast<unsigned char>(byte) ^ (key * (key ^ 1) >> 8 & 0xFF));
    Turn(plain);
    return static_cast<char>(plain);
}

std::string HostMemberData::Take(std::uint64_t count) {
    std::string bytes = file_.ReadAt(at_, static_cast<std::size_t>(std::min(count, end_ - at_)));
    at_ += bytes.size();
    return bytes;
}

bool HostMemberData::Fill() {
    packed_ = Take(unpacked_.size());
    if (aes_)
        aes_->Decipher(packed_);
    else if (member_.encrypted)
        for (char& byte : packed_) byte = Decipher(byte);
    stream_.next_in = reinterpret_cast<Bytef*>(packed_.data());
    stream_.avail_in = static_cast<uInt>(packed_.size());
    return !packed_.empty();
}

// A seal stands for the check sum, which then may be 0.
bool HostMemberData::CheckEnd() {
    const bool sealed = aes_ && aes_->Sealed(file_.ReadAt(end_, AesCipher::kSealSize));
    return aes_ && (!sealed || member_.checkSum == 0) ? sealed : sum_ == member_.checkSum;
}

std::string_view HostMemberData::Next() {
    std::string_view bytes;
    while (bytes.empty() && !ended_ && !damaged_) {
        if (stream_.avail_in == 0 && !Fill()) {
            ended_ = member_.method == kStored;
            damaged_ = !ended_;
        } else if (member_.method == kStored) {
            bytes = packed_;
            stream_.avail_in = 0;
        } else {
            stream_.next_out = reinterpret_cast<Bytef*>(unpacked_.data());
            stream_.avail_out = static_cast<uInt>(unpacked_.size());
            const int result = inflate(&stream_, Z_NO_FLUSH);
            ended_ = result == Z_STREAM_END;
            damaged_ = !ended_ && result != Z_OK;
            bytes = std::string_view(unpacked_.data(), unpacked_.size() - stream_.avail_out);
        }
        if (!bytes.empty())
            sum_ = static_cast<std::uint32_t>(
                crc32(sum_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
        if (ended_) damaged_ = !CheckEnd();
    }
    return damaged_ ? std::string_view() : bytes;
}

class HostZipArchive : public ZipArchive {
public:
    HostZipArchive(FileHandle file, std::uint64_t size) : file_(std::move(file)), size_(size) {}
    std::uint64_t Size() const override { return size_; }
    std::string Read(std::uint64_t offset, std::size_t count) override { return file_.ReadAt(offset, count); }
    bool Unpacks(const ZipMember& member) const override {
        return member.method == kStored || member.method == kDeflated;
    }
    std::unique_ptr<MemberData> Open(const ZipMember& member, const std::string& password) override {
        return std::make_unique<HostMemberData>(file_, member, password);
    }

private:
    const FileHandle file_;
    const std::uint64_t size_;
};

} // namespace

std::unique_ptr<ZipArchive> OpenZipArchive(const std::string& path) {
    try {
        FileHandle file(FilePath(path), GENERIC_READ, OPEN_EXISTING);
        LARGE_INTEGER size{};
        if (!file || !GetFileSizeEx(file.Get(), &size)) return nullptr;
        return std::make_unique<HostZipArchive>(std::move(file), static_cast<std::uint64_t>(size.QuadPart));
    } catch (const RuntimeError&) { // no such path
        return nullptr;
    }
}

void UzpVersion2(UnzipVersion& version) {
    version.version = std::string("zlib ") + zlibVersion();
}

} // namespace korlan
