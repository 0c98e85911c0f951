#include "platform/win32/MemberData.h"

#include <algorithm>

namespace korlan {
namespace {

constexpr std::uint32_t kStored = 0, kDeflated = 8;
constexpr std::uint64_t kCipherHeader = 12; // bytes before an enciphered member's data

std::uint32_t TurnSum(std::uint32_t sum, unsigned char byte) {
    return static_cast<std::uint32_t>(get_crc_table()[(sum ^ byte) & 0xFF]) ^ sum >> 8;
}

} // namespace

bool MethodIsKnown(std::uint32_t method) {
    return method == kStored || method == kDeflated;
}

MemberData::MemberData(const FileHandle& file, const ZipMember& member, const std::string& password)
    : file_(file), member_(member), at_(member.data), end_(member.data + member.packed) {
    damaged_ = inflateInit2(&stream_, -MAX_WBITS) != Z_OK;
    if (!member.encrypted) return;
    for (const char c : password) Turn(static_cast<unsigned char>(c));
    for (const char c : file_.ReadAt(at_, kCipherHeader)) Decipher(c);
    at_ = std::min(at_ + kCipherHeader, end_);
}

MemberData::~MemberData() {
    inflateEnd(&stream_);
}

// The archive format's own cipher, as its public description has it.
void MemberData::Turn(unsigned char plain) {
    keys_[0] = TurnSum(keys_[0], plain);
    keys_[1] = (keys_[1] + (keys_[0] & 0xFF)) * 134775813 + 1;
    keys_[2] = TurnSum(keys_[2], static_cast<unsigned char>(keys_[1] >> 24));
}

char MemberData::Decipher(char byte) {
    const std::uint32_t key = (keys_[2] | 2) & 0xFFFF;
    const auto plain = static_cast<unsigned char>(static_cast<unsigned char>(byte) ^ (key * (key ^ 1) >> 8 & 0xFF));
    Turn(plain);
    return static_cast<char>(plain);
}

bool MemberData::Fill() {
    packed_ = file_.ReadAt(at_, static_cast<std::size_t>(std::min<std::uint64_t>(unpacked_.size(), end_ - at_)));
    at_ += packed_.size();
    if (member_.encrypted)
        for (char& byte : packed_) byte = Decipher(byte);
    stream_.next_in = reinterpret_cast<Bytef*>(packed_.data());
    stream_.avail_in = static_cast<uInt>(packed_.size());
    return !packed_.empty();
}

std::string_view MemberData::Next() {
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
    }
    written_ += bytes.size();
    damaged_ = damaged_ || written_ > member_.size;
    if (damaged_ || bytes.empty()) return {};
    sum_ = static_cast<std::uint32_t>(
        crc32(sum_, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
    return bytes;
}

bool MemberData::Whole() const {
    return ended_ && !damaged_ && written_ == member_.size && sum_ == member_.checkSum;
}

} // namespace korlan
