// Zero-terminated texts that the suite's library hands out by pointer, as this program reads them.
#pragma once

#include <algorithm>
#include <string>

namespace korlan {

// The text goes through a buffer of 1024 characters: one of 1022 or more is taken as empty.
inline std::string SuiteText(const std::string& text) {
    const auto characters = std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
    return characters >= 1022 ? std::string() : text;
}

} // namespace korlan
