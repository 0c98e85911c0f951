#include "platform/Fonts.h"

#include <windows.h>

namespace korlan {

std::int32_t DefaultCharset() {
    DWORD codePage = 0;
    GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<LPWSTR>(&codePage), sizeof codePage / sizeof(wchar_t));
    CHARSETINFO info{};
    const bool known = codePage != 0 && TranslateCharsetInfo(reinterpret_cast<DWORD*>(static_cast<ULONG_PTR>(codePage)),
                                                             &info, TCI_SRCCODEPAGE);
    return known ? static_cast<std::int32_t>(info.ciCharset) : DEFAULT_CHARSET;
}

} // namespace korlan
