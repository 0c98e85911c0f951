// Registration of the components among the files of an update. Each takes the index of a record of the file table or a
// full path, reports nothing and returns 0. Only files extracted into the program's own folder are registered, and the
// programs that do it are not waited for; one that cannot be started passes unseen. A wrong index raises 9.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

std::int32_t RegisterFile(std::int32_t recordIndex);
std::int32_t UnregisterFile(std::int32_t recordIndex);

std::int32_t RegisterTypeLibrary(const std::string& path);
std::int32_t UnregisterTypeLibrary(const std::string& path); // an error ends it silently

} // namespace korlan
