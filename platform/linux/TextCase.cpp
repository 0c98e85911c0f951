#include "platform/TextCase.h"

#include "platform/TextEncoding.h"

#include <clocale>
#include <cwctype>

namespace korlan {
namespace {

// The C library's own tables for all of Unicode, whatever locale the process runs in.
locale_t UnicodeLocale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

// `first` to `last` are the letters of ASCII that change, by `step`.
std::string Convert(std::string_view utf8, char first, char last, int step, wint_t (*convert)(wint_t, locale_t)) {
    std::string converted;
    converted.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const char byte = utf8[at];
        const Utf8Character character =
            static_cast<unsigned char>(byte) < 0x80 ? Utf8Character{} : NextUtf8Character(utf8, at);
        if (character.length == 0) {
            converted += static_cast<char>(byte >= first && byte <= last ? byte + step : byte);
            ++at;
            continue;
        }
        const locale_t locale = UnicodeLocale();
        AppendUtf8(converted, locale ? static_cast<char32_t>(convert(static_cast<wint_t>(character.code), locale))
                                     : character.code);
        at += character.length;
    }
    return converted;
}

} // namespace

std::string UpperCase(std::string_view utf8) {
    return Convert(utf8, 'a', 'z', 'A' - 'a', towupper_l);
}

std::string LowerCase(std::string_view utf8) {
    return Convert(utf8, 'A', 'Z', 'a' - 'A', towlower_l);
}

} // namespace korlan
