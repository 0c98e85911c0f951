// Profile files by their host path, for the procedures of this back end that keep one.
// A file read once is not parsed again until it changes; an outside change is seen at the next read.
#pragma once

#include "platform/IniFile.h"

#include <string>

namespace korlan {

// As ReadProfileValue. A file that cannot be read reads as an empty one.
std::optional<std::string> ReadProfileFile(std::string_view section, std::string_view key, std::size_t bufferSize,
                                           const std::string& hostPath);

// As WriteProfileValue, but gives 0 or an errno value. The new file is written under a temporary name in the same
// folder, synced and renamed; it keeps the mode and, as far as the rights go, the owner of the old one. A link stays a
// link: the file it leads to is replaced. A read-only file is EACCES, also for the administrator.
int WriteProfileFile(std::string_view section, std::string_view key, std::string_view value,
                     const std::string& hostPath);

} // namespace korlan
