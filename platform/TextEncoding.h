// 8-bit text of files and the UTF-8 text used inside. Bytes are UTF-8 where all of them are valid UTF-8, else
// Windows-1252; the character of code 128 is the euro sign. The five codes that 1252 leaves open (81 8D 8F 90 9D) stand
// for the control characters of the same number, so that every byte can be read and written back.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korlan {

bool IsValidUtf8(std::string_view bytes);
std::string TextFromBytes(std::string_view bytes);
std::string TextFromCodePage(std::string_view bytes); // every byte is a Windows-1252 character
std::string BytesFromText(std::string_view utf8);     // Windows-1252; characters outside it become "?"

struct Utf8Character {
    char32_t code = 0;
    std::size_t length = 0; // bytes it takes; 0 when there is no valid character here
};
// Whether the byte goes on with a character that an earlier one began.
constexpr bool IsUtf8Tail(char byte) {
    return (byte & 0xC0) == 0x80;
}
// Surrogates and overlong forms are no characters.
Utf8Character NextUtf8Character(std::string_view bytes, std::size_t at);
void AppendUtf8(std::string& text, char32_t code);

} // namespace korlan
