#include "platform/TextEncoding.h"

#include <algorithm>
#include <array>

namespace korlan {
namespace {

// Windows-1252 from 80 to 9F; all other codes are those of Unicode.
constexpr std::array<char32_t, 32> kCodePage = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char CodePageByte(char32_t code) {
    if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) return static_cast<char>(code);
    const auto found = std::find(kCodePage.begin(), kCodePage.end(), code);
    return found == kCodePage.end() ? '?' : static_cast<char>(0x80 + (found - kCodePage.begin()));
}

} // namespace

Utf8Character NextUtf8Character(std::string_view bytes, std::size_t at) {
    if (at >= bytes.size()) return {};
    const auto lead = static_cast<unsigned char>(bytes[at]);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xF0 && lead <= 0xF4  ? 4
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                                                             : 0;
    if (length == 0 || bytes.size() - at < length) return {};
    char32_t code = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsUtf8Tail(bytes[at + i])) return {};
        code = code << 6 | (static_cast<unsigned char>(bytes[at + i]) & 0x3Fu);
    }
    constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {};
    return {code, length};
}

void AppendUtf8(std::string& text, char32_t code) {
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        tail(6), tail(0);
    } else {
        text += static_cast<char>(0xF0 | code >> 18);
        tail(12), tail(6), tail(0);
    }
}

bool IsValidUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = NextUtf8Character(bytes, at).length;
        if (length == 0) return false;
        at += length;
    }
    return true;
}

std::string TextFromCodePage(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        AppendUtf8(text, byte >= 0x80 && byte < 0xA0 ? kCodePage[byte - 0x80] : byte);
    }
    return text;
}

std::string TextFromBytes(std::string_view bytes) {
    return IsValidUtf8(bytes) ? std::string(bytes) : TextFromCodePage(bytes);
}

std::string BytesFromText(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const Utf8Character character = NextUtf8Character(utf8, at);
        bytes += character.length == 0 ? '?' : CodePageByte(character.code);
        at += std::max<std::size_t>(character.length, 1);
    }
    return bytes;
}

} // namespace korlan
