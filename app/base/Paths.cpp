#include "app/base/Paths.h"

#include "app/base/TextHelpers.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"

#include <algorithm>

namespace korlan {

void AddBackslash(std::string& path) {
    path = Trim(path);
    if (path.empty() || path.back() != '\\') path += '\\';
}

bool FileExists(const std::string& path) {
    return FileOpensForReading(path);
}

void RemoveFile(const std::string& path) {
    SetAttributesNormal(path);
    EraseFile(path);
}

std::string GetAppFolder() {
    const std::string program = ProgramPath();
    return program.substr(0, program.find_last_of('\\'));
}

namespace {

// Two dots, however many dots and blanks follow: Windows drops those at the end of a component.
bool LeadsUpwards(std::string_view component) {
    return component.starts_with("..") && component.find_first_not_of(". ") == std::string::npos;
}

} // namespace

bool StaysInFolder(std::string_view relativePath) {
    const auto isForbidden = [](char c) { return c == ':' || static_cast<unsigned char>(c) < ' '; };
    if (std::any_of(relativePath.begin(), relativePath.end(), isForbidden)) return false;
    for (;;) {
        const std::size_t end = std::min(relativePath.find_first_of("\\/"), relativePath.size());
        if (LeadsUpwards(relativePath.substr(0, end))) return false;
        if (end == relativePath.size()) return true;
        relativePath.remove_prefix(end + 1);
    }
}

bool IsBareName(std::string_view name) {
    return StaysInFolder(name) && name.find_first_of("\\/") == std::string_view::npos;
}

} // namespace korlan
