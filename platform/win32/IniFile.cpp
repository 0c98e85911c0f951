#include "platform/IniFile.h"

#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/RuntimeError.h"
#include "platform/TextEncoding.h"
#include "platform/win32/Wide.h"

#include <algorithm>
#include <vector>

namespace korlan {
namespace {

// A file that is not there, cannot be read or is empty counts as ASCII.
std::string BytesOfFile(const std::string& file) {
    constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024;
    try {
        return ReadFilePart(file, 0, kLargest);
    } catch (const RuntimeError&) {
        return {};
    }
}

bool IsAscii(std::string_view bytes) {
    return std::ranges::none_of(bytes, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

// A text in the form the file has. One of ASCII takes the code page, but not for a text that it lacks a letter of or
// that would read as UTF-8.
std::string InFormOf(std::string_view text, std::string_view fileBytes) {
    if (!IsAscii(fileBytes)) return IsValidUtf8(fileBytes) ? std::string(text) : BytesFromText(text);
    std::string bytes = BytesFromText(text);
    return TextFromBytes(bytes) == text ? bytes : std::string(text);
}

std::optional<std::string> FilePathOf(const std::string& file) {
    if (file.find('\0') != std::string::npos) return std::nullopt;
    return CodePagePath(file);
}

} // namespace

std::optional<std::string> ReadProfileValue(std::string_view section, std::string_view key, std::size_t bufferSize,
                                            const std::string& file) {
    const auto path = FilePathOf(file);
    if (!path || path->empty()) return std::nullopt;
    const std::string fileBytes = BytesOfFile(file);
    const std::string sectionBytes = InFormOf(section, fileBytes), keyBytes = InFormOf(key, fileBytes);
    const auto read = [&](const char* fallback, std::string& value) {
        value.resize(GetPrivateProfileStringA(sectionBytes.c_str(), keyBytes.c_str(), fallback, value.data(),
                                              static_cast<DWORD>(value.size()), path->c_str()));
        return !value.empty();
    };
    std::string first(4, '\0'), second(4, '\0'), value(bufferSize, '\0');
    if (!read("", first) && read("?", second)) return std::nullopt; // an empty value stays empty for any default
    read("", value);
    return IsValidUtf8(fileBytes) ? value : TextFromCodePage(value);
}

std::int32_t WriteProfileValue(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file) {
    if (file.empty()) return ERROR_ACCESS_DENIED;
    const auto path = FilePathOf(file);
    if (!path) return ERROR_PATH_NOT_FOUND;
    const std::string fileBytes = BytesOfFile(file);
    const BOOL well = WritePrivateProfileStringA(InFormOf(section, fileBytes).c_str(), InFormOf(key, fileBytes).c_str(),
                                                 InFormOf(value, fileBytes).c_str(), path->c_str());
    const std::int32_t code = well ? 0 : static_cast<std::int32_t>(GetLastError());
    LogLine("setting [" + std::string(section) + "] " + std::string(key) + "=" + std::string(value) +
            (code == 0 ? "" : ": " + DescribeSystemError(code)));
    return code;
}

std::string DescribeSystemError(std::int32_t code) {
    std::wstring text(512, 0);
    constexpr DWORD kEnglish = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
    text.resize(FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                               static_cast<DWORD>(code), kEnglish, text.data(), static_cast<DWORD>(text.size()),
                               nullptr));
    const std::string message = Narrow(text.substr(0, text.find_last_not_of(L"\r\n ") + 1));
    return message.empty() ? "System error " + std::to_string(code) + "." : message;
}

} // namespace korlan
