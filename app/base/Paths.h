// Windows-form paths of the installation.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

void AddBackslash(std::string& path);     // trims it, then appends "\" unless it ends with one
bool FileExists(const std::string& path); // it can be opened for reading
void RemoveFile(const std::string& path); // a read-only one, too

// The folder of the program's own executable, without a trailing backslash.
std::string GetAppFolder();

// The server names files by texts that become part of a path, and of lines in the suite's INI file. False for one that
// could lead out of its folder or its line (a component "..", a colon, a control character).
bool StaysInFolder(std::string_view relativePath);
bool IsBareName(std::string_view name); // which holds no separator either

} // namespace korlan
