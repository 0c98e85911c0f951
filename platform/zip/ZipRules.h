// What every back end's archive library answers, and the names it lets members have.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string>

namespace korlan {

// What the call returns, from harmless to grave.
enum class Outcome : std::int32_t {
    Well = 0,
    Warning = 1,
    NoMethod = 81,
    NoPassword = 82,
    Damaged = 3,
    NoArchive = 9,
    CannotWrite = 50,
    Stopped = 80,
};

inline int Gravity(Outcome outcome) {
    constexpr std::array kOrder{Outcome::Well,    Outcome::Warning,   Outcome::NoMethod,    Outcome::NoPassword,
                                Outcome::Damaged, Outcome::NoArchive, Outcome::CannotWrite, Outcome::Stopped};
    return static_cast<int>(std::distance(kOrder.begin(), std::ranges::find(kOrder, outcome)));
}

inline constexpr std::size_t kLongestPassword = 256;   // characters
inline constexpr std::int32_t kMostWrongPasswords = 3; // in a row

inline bool IsSeparator(char character) {
    return character == '/' || character == '\\';
} // archives made on Windows hold both

inline std::string LastComponent(const std::string& member) {
    return {std::find_if(member.rbegin(), member.rend(), IsSeparator).base(), member.end()};
}

inline bool MayNameAFile(const std::string& component) {
    if (component.empty() || component == "." || component == "..") return false;
    return std::ranges::none_of(component, [](char c) { return c == ':' || static_cast<unsigned char>(c) < 32; });
}

inline bool HasParentComponent(const std::string& path) {
    for (auto at = path.begin(); at != path.end();) {
        const auto end = std::find_if(at, path.end(), IsSeparator);
        if (std::string(at, end) == "..") return true;
        at = end == path.end() ? end : end + 1;
    }
    return false;
}

} // namespace korlan
