#include "platform/win32/Wide.h"

namespace korlan {
namespace {

std::wstring ToWide(UINT codePage, std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(codePage, 0, bytes.data(), size, nullptr, 0)), 0);
    MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string FromWide(UINT codePage, std::wstring_view wide, BOOL* lossy) {
    const int size = static_cast<int>(wide.size());
    std::string bytes(
        static_cast<std::size_t>(WideCharToMultiByte(codePage, 0, wide.data(), size, nullptr, 0, nullptr, nullptr)), 0);
    WideCharToMultiByte(codePage, 0, wide.data(), size, bytes.data(), static_cast<int>(bytes.size()), nullptr, lossy);
    return bytes;
}

} // namespace

std::wstring Wide(std::string_view utf8) {
    return ToWide(CP_UTF8, utf8);
}

std::string Narrow(std::wstring_view wide) {
    return FromWide(CP_UTF8, wide, nullptr);
}

std::wstring WideFromCodePage(std::string_view bytes) {
    return ToWide(CP_ACP, bytes);
}

std::string CodePageFromWide(std::wstring_view wide) {
    return FromWide(CP_ACP, wide, nullptr);
}

std::optional<std::string> CodePagePath(const std::string& path) {
    const std::wstring wide = Wide(path);
    BOOL lossy = FALSE;
    std::string bytes = FromWide(CP_ACP, wide, &lossy);
    if (!lossy) return bytes;
    std::wstring shortName(MAX_PATH, 0);
    shortName.resize(GetShortPathNameW(wide.c_str(), shortName.data(), MAX_PATH));
    if (shortName.empty() || shortName.size() >= MAX_PATH) return std::nullopt;
    bytes = FromWide(CP_ACP, shortName, &lossy);
    return lossy ? std::nullopt : std::optional(bytes);
}

} // namespace korlan
