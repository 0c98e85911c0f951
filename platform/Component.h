// Type libraries. Without component registration on the host every call answers that it failed, and nothing happens.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

struct TypeLibraryInfo {
    std::string identifier; // "{...}"
    std::int32_t majorVersion = 0, minorVersion = 0, locale = 0;
};

// Loads the library at `path` and registers it with an empty help folder. False when it cannot be loaded.
bool LoadAndRegisterTypeLib(const std::string& path);

// What the file says of itself; a file that cannot be described raises an error.
TypeLibraryInfo DescribeTypeLib(const std::string& path);

// False when `identifier` is no class identifier.
bool UnregisterTypeLib(const TypeLibraryInfo& library);

} // namespace korlan
