// Fonts as the window uses them, and the one question the program asks the host about them.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// face: name as Windows knows it ("MS Sans Serif"; a back end without it shows its nearest one).
// points: size in typographic points (1/72 inch), 0 = the host's own size.
// charset: a Windows character set number (0 Western, 1 default, 204 Russian, 238 Central European ...).
struct FontSpec {
    std::string face;
    float points = 0;
    std::int32_t charset = 1;
    bool bold = false;
    bool operator==(const FontSpec&) const = default;
};

// The character set of the user's default locale, 1 where it cannot be told.
std::int32_t DefaultCharset();

} // namespace korlan
