// What can be done to a text without knowing more than the letters and blanks of ASCII: its case, and its ends.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace korlan {

constexpr char UpperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}
constexpr char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

inline std::string UpperAsciiText(std::string_view text) {
    std::string upper(text);
    std::ranges::transform(upper, upper.begin(), UpperAscii);
    return upper;
}
inline std::string LowerAsciiText(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), LowerAscii);
    return lower;
}

inline bool EqualNoCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, LowerAscii, LowerAscii);
}

// Without the characters of `blanks` at both ends.
inline std::string_view Trimmed(std::string_view text, std::string_view blanks = " \t\r\n") {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

} // namespace korlan
