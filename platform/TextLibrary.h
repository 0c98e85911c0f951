// The suite's localisation library: a table of texts by number, loaded from one file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace korlan {

// Loads the table; what was loaded before is gone. A missing or unreadable file leaves the library without texts.
void L32_Object_Create(const std::string& path);

// The text of that number as UTF-8, nothing when there is none.
std::optional<std::string> L32_Object_GetMessage(std::int32_t identifier);

} // namespace korlan
