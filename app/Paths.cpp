#include "app/Paths.h"

#include "app/TextHelpers.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"

namespace korlan {

void AddBackslash(std::string& path) {
    path = Trim(path);
    if (path.empty() || path.back() != '\\') path += '\\';
}

bool FileExists(const std::string& path) {
    return FileOpensForReading(path);
}

std::string GetAppFolder() {
    const std::string program = ProgramPath();
    return program.substr(0, program.find_last_of('\\'));
}

void RequireInsideFolder(std::string_view relativePath) {
    const std::string path = Replace(relativePath, "/", "\\");
    bool outside = path.find_first_of(std::string_view(":\0", 2)) != std::string::npos;
    for (const std::string& component : Split(path, "\\")) outside = outside || RightTrim(component) == "..";
    if (outside) throw RuntimeError(kErrPathNotFound, "Path not found: " + path);
}

void RequireBareName(std::string_view name) {
    RequireInsideFolder(name);
    if (name.find_first_of("\\/") != std::string_view::npos)
        throw RuntimeError(kErrPathNotFound, "Path not found: " + std::string(name));
}

} // namespace korlan
