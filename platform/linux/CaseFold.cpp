#include "platform/linux/CaseFold.h"

#include "platform/TextEncoding.h"

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cwctype>

namespace korlan {
namespace {

// The C library's own upper-case table for all of Unicode, whatever locale the process runs in.
locale_t UnicodeLocale() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

char32_t UpperCase(char32_t character) {
    const locale_t locale = UnicodeLocale();
    return locale ? static_cast<char32_t>(towupper_l(static_cast<wint_t>(character), locale)) : character;
}

} // namespace

std::string FoldCase(std::string_view utf8) {
    std::string folded;
    folded.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        const Utf8Character character = byte < 0x80 ? Utf8Character{byte, 1} : NextUtf8Character(utf8, at);
        if (byte < 0x80)
            folded += static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 32 : byte);
        else if (character.length == 0)
            folded += utf8[at];
        else
            AppendUtf8(folded, UpperCase(character.code));
        at += std::max<std::size_t>(character.length, 1);
    }
    return folded;
}

} // namespace korlan
