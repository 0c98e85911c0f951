// The border between the program's UTF-8 and the system's two kinds of text.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace korlan {

std::wstring Wide(std::string_view utf8);
std::string Narrow(std::wstring_view wide);

// Bytes of the system's code page.
std::wstring WideFromCodePage(std::string_view bytes);
std::string CodePageFromWide(std::wstring_view wide); // what it lacks becomes "?"

// A path for the calls that take only the code page. A path with other letters goes by its short name; nothing where
// it has none.
std::optional<std::string> CodePagePath(const std::string& path);

} // namespace korlan
