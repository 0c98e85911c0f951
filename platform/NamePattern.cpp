#include "platform/NamePattern.h"

namespace korlan {

// Steps back to the last "*" only.
bool MatchesNamePattern(std::string_view name, std::string_view pattern) {
    std::size_t at = 0, inPattern = 0, star = std::string_view::npos, afterStar = 0;
    const auto isTail = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
    while (at < name.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == '*') {
            star = inPattern++;
            afterStar = at;
        } else if (inPattern < pattern.size() && pattern[inPattern] == '?') {
            ++inPattern;
            do ++at;
            while (at < name.size() && isTail(name[at]));
        } else if (inPattern < pattern.size() && pattern[inPattern] == name[at]) {
            ++inPattern, ++at;
        } else if (star != std::string_view::npos) {
            inPattern = star + 1;
            at = ++afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', inPattern) == std::string_view::npos;
}

} // namespace korlan
