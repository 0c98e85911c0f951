// Zero-terminated texts that the suite's library hands out by pointer, as this program reads them.
#pragma once

#include "platform/TextEncoding.h"

#include <algorithm>
#include <string>

namespace korlan {

// The text goes through a buffer of 1024 characters: one of 1022 or more is taken as empty.
inline std::string SuiteText(const std::string& text) {
    const auto tails = std::count_if(text.begin(), text.end(), IsUtf8Tail);
    return std::ssize(text) - tails >= 1022 ? std::string() : text;
}

} // namespace korlan
