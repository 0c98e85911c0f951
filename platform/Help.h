// Compiled help in a window of the back end's own.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

enum class HelpCommand : std::int32_t { DisplayTopic = 1, CloseAll = 18 };

// DisplayTopic opens `file` (Windows-form path) at its first page; a missing or damaged file opens nothing and is no
// error. CloseAll closes every help window this program opened; its file is empty.
void OpenCompiledHelp(const std::string& file, HelpCommand command, std::int32_t data);

} // namespace korlan
