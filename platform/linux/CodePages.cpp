// Texts in the code pages of Windows, through the host's own converter.
#include "platform/DatabaseHost.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>

namespace korlan {
namespace {

// Null when the host does not know the code page. The last one stays open: all values of a database are of one page.
iconv_t ConverterFrom(unsigned codePage) {
    static unsigned opened = 0;
    static std::unique_ptr<void, int (*)(iconv_t)> converter(nullptr, iconv_close);
    if (!converter || opened != codePage) {
        const iconv_t fresh = iconv_open("UTF-8", ("CP" + std::to_string(codePage)).c_str());
        converter.reset(reinterpret_cast<std::intptr_t>(fresh) == -1 ? nullptr : fresh);
        opened = codePage;
    }
    return converter.get();
}

// One call of the converter: 0 or the errno value. Without `next` it hands out what it holds back for a character that
// might still change it.
int Convert(iconv_t converter, char** next, std::size_t* left, std::string& out) {
    std::array<char, 512> piece;
    char* end = piece.data();
    std::size_t room = piece.size();
    const bool failed = iconv(converter, next, left, &end, &room) == static_cast<std::size_t>(-1);
    const int error = failed ? errno : 0;
    out.append(piece.data(), end);
    return error;
}

} // namespace

bool DecodeCodePage(unsigned codePage, std::string_view bytes, std::string& out) {
    const iconv_t converter = ConverterFrom(codePage);
    if (converter == nullptr) return false;
    std::string in(bytes); // iconv wants to be able to write there
    char* next = in.data();
    std::size_t left = in.size();
    while (left > 0) {
        const int error = Convert(converter, &next, &left, out);
        if (error == 0 || error == E2BIG) continue;
        Convert(converter, nullptr, nullptr, out);
        out += "\xEF\xBF\xBD"; // a byte that begins no character, or a character cut off
        ++next;
        --left;
    }
    Convert(converter, nullptr, nullptr, out);
    return true;
}

} // namespace korlan
