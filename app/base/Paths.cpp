#include "app/base/Paths.h"

#include "app/base/TextHelpers.h"
#include "platform/FileSystem.h"
#include "platform/Process.h"
#include "platform/RuntimeError.h"

#include <algorithm>
#include <vector>

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

void TryFolder(const std::string& folder) {
    std::string previous;
    try {
        previous = CurrentFolder();
    } catch (const RuntimeError&) { // it has been deleted, which says nothing about the folder to try
    }
    ChangeCurrentFolder(folder);
    try {
        ChangeCurrentFolder(previous);
    } catch (const RuntimeError&) {
    }
}

std::string GetAppFolder() {
    const std::string program = ProgramPath();
    return program.substr(0, program.find_last_of('\\'));
}

namespace {

// Two dots, however many dots and blanks follow: Windows drops those at the end of a component.
bool LeadsUpwards(const std::string& component) {
    return component.starts_with("..") && component.find_first_not_of(". ") == std::string::npos;
}

} // namespace

void RequireInsideFolder(std::string_view relativePath) {
    const std::string path = Replace(relativePath, "/", "\\");
    const std::vector<std::string> components = Split(path, "\\");
    const auto isForbidden = [](char c) { return c == ':' || static_cast<unsigned char>(c) < ' '; };
    if (std::any_of(path.begin(), path.end(), isForbidden) ||
        std::any_of(components.begin(), components.end(), LeadsUpwards))
        throw RuntimeError(kErrPathNotFound, "Path not found: " + path);
}

void RequireBareName(std::string_view name) {
    RequireInsideFolder(name);
    if (name.find_first_of("\\/") != std::string_view::npos)
        throw RuntimeError(kErrPathNotFound, "Path not found: " + std::string(name));
}

} // namespace korlan
