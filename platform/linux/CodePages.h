// Texts in the code pages of Windows, through the host's own converter.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

// Appends the text as UTF-8; what stands for no character becomes U+FFFD. False, with `out` as it was, when the host
// does not know the code page.
bool DecodeCodePage(unsigned codePage, std::string_view bytes, std::string& out);

} // namespace korlan
