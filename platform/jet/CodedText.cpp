#include "platform/jet/CodedText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace korlan::jet {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Characters of the bytes 80 to 9F; those without a meaning stay control characters, as on Windows.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

void AppendCharacter(std::string& out, char32_t c) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(static_cast<std::uint8_t>(byte))); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | c >> 6);
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | c >> 18);
        put(0x80 | (c >> 12 & 0x3F));
        put(0x80 | (c >> 6 & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

// Takes UTF-16 units one at a time and keeps a high surrogate until its partner comes.
class UnitJoiner {
public:
    explicit UnitJoiner(std::string& out) : out_(out) {}
    void Put(char16_t unit) {
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        if (high_ != 0 && low) {
            AppendCharacter(out_, 0x10000 + (static_cast<char32_t>(high_ - 0xD800) << 10) + (unit - 0xDC00u));
            high_ = 0;
            return;
        }
        Finish();
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            high_ = unit;
        } else {
            AppendCharacter(out_, low ? kReplacement : unit);
        }
    }
    void Finish() {
        if (high_ != 0) AppendCharacter(out_, kReplacement);
        high_ = 0;
    }

private:
    std::string& out_;
    char16_t high_ = 0;
};

std::uint8_t Byte(std::string_view bytes, std::size_t at) { return static_cast<std::uint8_t>(bytes[at]); }

char16_t Unit(std::string_view bytes, std::size_t at) {
    return static_cast<char16_t>(Byte(bytes, at) | Byte(bytes, at + 1) << 8);
}

void AppendSqueezed(std::string& out, std::string_view bytes) {
    UnitJoiner joiner(out);
    bool squeezed = true;
    for (std::size_t at = 0; at < bytes.size();) {
        if (bytes[at] == 0) {
            squeezed = !squeezed;
            ++at;
        } else if (squeezed) {
            joiner.Put(Byte(bytes, at++));
        } else if (bytes.size() - at >= 2) {
            joiner.Put(Unit(bytes, at));
            at += 2;
        } else {
            joiner.Put(static_cast<char16_t>(kReplacement));
            ++at;
        }
    }
    joiner.Finish();
}

} // namespace

void AppendCodePageText(std::string& out, std::string_view bytes, unsigned codePage, CodePageDecoder decoder) {
    const bool plain = std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
    if (plain) {
        out.append(bytes);
        return;
    }
    if (codePage != 1252 && decoder != nullptr && decoder(codePage, bytes, out)) return;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const std::uint8_t byte = Byte(bytes, at);
        AppendCharacter(out, byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80u] : byte);
    }
}

void AppendUtf16Text(std::string& out, std::string_view bytes) {
    UnitJoiner joiner(out);
    for (std::size_t at = 0; bytes.size() - at >= 2; at += 2) joiner.Put(Unit(bytes, at));
    joiner.Finish();
    if (bytes.size() % 2 != 0) AppendCharacter(out, kReplacement);
}

void AppendJet4Text(std::string& out, std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        AppendSqueezed(out, bytes.substr(2));
    } else {
        AppendUtf16Text(out, bytes);
    }
}

} // namespace korlan::jet
