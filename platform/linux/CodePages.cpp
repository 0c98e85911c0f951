#include "platform/linux/CodePages.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>

namespace korlan {

bool DecodeCodePage(unsigned codePage, std::string_view bytes, std::string& out) {
    const std::string name = "CP" + std::to_string(codePage);
    const iconv_t opened = iconv_open("UTF-8", name.c_str());
    if (reinterpret_cast<std::intptr_t>(opened) == -1) return false;
    const std::unique_ptr<void, int (*)(iconv_t)> converter(opened, iconv_close);
    std::string in(bytes); // iconv wants to be able to write there
    char* next = in.data();
    std::size_t left = in.size();
    while (left > 0) {
        std::array<char, 512> piece;
        char* end = piece.data();
        std::size_t room = piece.size();
        const bool failed = iconv(converter.get(), &next, &left, &end, &room) == static_cast<std::size_t>(-1);
        const int error = failed ? errno : 0;
        out.append(piece.data(), end);
        if (!failed || error == E2BIG) continue;
        out += "\xEF\xBF\xBD"; // a byte that begins no character, or a character cut off
        ++next;
        --left;
    }
    return true;
}

} // namespace korlan
