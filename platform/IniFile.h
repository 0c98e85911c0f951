// Windows profile (INI) files: the rules of GetPrivateProfileString and WritePrivateProfileString.
// Files are Windows-form paths; texts go in and out as UTF-8. A file's 8-bit text is UTF-8 where all of it is valid
// UTF-8, else Windows-1252; a write keeps the form the file has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korlan {

// The value, cut to bufferSize - 1 bytes of the file's own form; nothing when the file, section or key is missing or
// the key stands without "=".
std::optional<std::string> ReadProfileValue(std::string_view section, std::string_view key, std::size_t bufferSize,
                                            const std::string& file);

// 0 on success, else the Windows error code (2 drive missing, 3 folder missing, 5 read-only or a folder, 32 in use, 112
// disk full). Changes one line and leaves every other byte as it was. A crash leaves the old file or the new one, never
// a part.
std::int32_t WriteProfileValue(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file);

// The system's description of such a code, in English ("Access is denied.").
std::string DescribeSystemError(std::int32_t code);

} // namespace korlan
