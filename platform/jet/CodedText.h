// Texts of a database file as UTF-8. Jet 3 stores bytes of the file's code page, Jet 4 and .accdb store UTF-16, whole
// or squeezed. Nothing here fails: what stands for no character becomes U+FFFD, and the text goes on behind it.
#pragma once

#include <string>
#include <string_view>

namespace korlan::jet {

// Given by the back end, for the code pages other than 1252. Appends the text; false, with `out` as it was, when the
// host does not know the code page. Only called for texts with bytes above 7F, so 5C is a backslash in every code page.
using CodePageDecoder = bool (*)(unsigned codePage, std::string_view bytes, std::string& out);

// Code page 1252 is built in and stands in for unknown ones; `decoder` may be null.
void AppendCodePageText(std::string& out, std::string_view bytes, unsigned codePage, CodePageDecoder decoder);
void AppendUtf16Text(std::string& out, std::string_view bytes); // little-endian
// A value: UTF-16, or after FF FE one byte a character, where a zero byte changes to two-byte units and back.
void AppendJet4Text(std::string& out, std::string_view bytes);

} // namespace korlan::jet
