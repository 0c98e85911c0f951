// A stretch of bytes that refuses to be read past its ends. Every byte of a database file is reached through one of
// these, so a number from a damaged file can ask for anything and only ever gets an error. Numbers are little-endian.
// Checks subtract and never add, so they hold for every value of an offset or a count.
#pragma once

#include "platform/DatabaseError.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korlan::jet {

// The one error of a damaged file; `what` names the fact that does not hold, for the log of whoever has the file.
[[noreturn]] inline void Damaged(const char* what) {
    throw RuntimeError(kErrUnrecognizedFormat, std::string("Unrecognized database format: ") + what);
}

inline void Require(bool holds, const char* what) {
    if (!holds) Damaged(what);
}

class ByteView {
public:
    ByteView() = default;
    explicit ByteView(std::string_view bytes) : bytes_(bytes) {}

    std::size_t Size() const { return bytes_.size(); }
    std::string_view Chars() const { return bytes_; }

    std::uint8_t U8(std::size_t at) const { return static_cast<std::uint8_t>(Checked(at, 1)[0]); }
    std::uint16_t U16(std::size_t at) const { return Number<std::uint16_t>(at); }
    std::uint32_t U32(std::size_t at) const { return Number<std::uint32_t>(at); }
    std::uint64_t U64(std::size_t at) const { return Number<std::uint64_t>(at); }
    float F32(std::size_t at) const { return std::bit_cast<float>(U32(at)); }
    double F64(std::size_t at) const { return std::bit_cast<double>(U64(at)); }

    ByteView Part(std::size_t at, std::size_t count) const { return ByteView(Checked(at, count)); }
    ByteView From(std::size_t at) const {
        Require(at <= bytes_.size(), "an offset past the end");
        return ByteView(bytes_.substr(at));
    }

private:
    std::string_view Checked(std::size_t at, std::size_t count) const {
        Require(at <= bytes_.size() && count <= bytes_.size() - at, "an offset past the end");
        return std::string_view(bytes_.data() + at, count);
    }
    template <class T>
    T Number(std::size_t at) const {
        const std::string_view bytes = Checked(at, sizeof(T));
        std::uint64_t value = 0;
        for (std::size_t i = sizeof(T); i-- > 0;) value = value << 8 | static_cast<std::uint8_t>(bytes[i]);
        return static_cast<T>(value);
    }

    std::string_view bytes_;
};

} // namespace korlan::jet
