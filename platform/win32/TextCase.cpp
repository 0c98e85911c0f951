// The system's own table for names of files, the same in every locale.
#include "platform/TextCase.h"

#include "platform/TextEncoding.h"

#include <windows.h>

#include <algorithm>

extern "C" {
WCHAR NTAPI RtlUpcaseUnicodeChar(WCHAR character);
WCHAR NTAPI RtlDowncaseUnicodeChar(WCHAR character);
}

namespace korlan {
namespace {

std::string Convert(std::string_view utf8, WCHAR(NTAPI* convert)(WCHAR)) {
    std::string converted;
    converted.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const Utf8Character character = NextUtf8Character(utf8, at);
        if (character.length == 0)
            converted += utf8[at];
        else
            AppendUtf8(converted,
                       character.code > 0xFFFF ? character.code : convert(static_cast<WCHAR>(character.code)));
        at += std::max<std::size_t>(character.length, 1);
    }
    return converted;
}

} // namespace

std::string UpperCase(std::string_view utf8) {
    return Convert(utf8, RtlUpcaseUnicodeChar);
}

std::string LowerCase(std::string_view utf8) {
    return Convert(utf8, RtlDowncaseUnicodeChar);
}

} // namespace korlan
