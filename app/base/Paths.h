// Windows-form paths of the installation.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

void AddBackslash(std::string& path);     // trims it, then appends "\" unless it ends with one
bool FileExists(const std::string& path); // it can be opened for reading
void RemoveFile(const std::string& path); // a read-only one, too

// Enters the folder and goes back to where it came from. Raises when the folder cannot be entered.
void TryFolder(const std::string& folder);

// The folder of the program's own executable, without a trailing backslash.
std::string GetAppFolder();

// The server names files by texts that become part of a path, and of lines in the suite's INI file. One that could lead
// out of its folder or its line (a component "..", a colon, a control character) raises 76.
void RequireInsideFolder(std::string_view relativePath);
// Likewise for a bare file name, which may hold no separator either.
void RequireBareName(std::string_view name);

} // namespace korlan
