#include "platform/win32/TargetFolder.h"

#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "platform/zip/ZipRules.h"

#include <random>

namespace korlan {
namespace {

constexpr const char* kTemporary = ".klnunzip";

// Makes the folder with its parents; what cannot be made shows when a file is.
void MakeFolders(const std::string& path) {
    if (HasParentComponent(path)) return;
    for (std::size_t end = path.find_first_of("\\/"); end != std::string::npos;
         end = path.find_first_of("\\/", end + 1))
        CreateDirectoryW(FilePath(path.substr(0, end)).c_str(), nullptr);
}

} // namespace

TargetFolder::TargetFolder(const std::string& path) : path_(path + "\\"), there_(false) {
    try {
        MakeFolders(path_);
        there_ = FolderExists(path);
        WIN32_FIND_DATAW found{};
        const HANDLE search = FindFirstFileW(Path(kTemporary + std::string("*")).c_str(), &found);
        if (search == INVALID_HANDLE_VALUE) return;
        do DeleteFileW(Path(Narrow(found.cFileName)).c_str());
        while (FindNextFileW(search, &found));
        FindClose(search);
    } catch (const RuntimeError&) { // a path that nothing can have
        there_ = false;
    }
}

TargetName TargetFolder::Find(const std::string& name) const {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(Path(name).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return {name};
    FindClose(search);
    return {Narrow(found.cFileName), true, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0};
}

NewFile::NewFile(const TargetFolder& folder) : folder_(folder) {
    for (int attempt = 0; attempt < 100 && !file_; ++attempt) {
        path_ = folder.Path(kTemporary + std::to_string(std::random_device{}()));
        file_ = FileHandle(path_, GENERIC_WRITE, CREATE_NEW);
        if (!file_ && GetLastError() != ERROR_FILE_EXISTS) path_.clear();
        if (path_.empty()) return;
    }
}

NewFile::~NewFile() {
    file_.Close();
    if (!path_.empty()) DeleteFileW(path_.c_str());
}

void NewFile::Restart() const {
    SetFilePointer(file_.Get(), 0, nullptr, FILE_BEGIN);
    SetEndOfFile(file_.Get());
}

DWORD NewFile::Install(const std::string& name, std::int64_t modified) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000, kSecondsTo1970 = 11'644'473'600; // ticks from 1601
    const auto ticks = static_cast<std::uint64_t>((modified + kSecondsTo1970) * kTicksPerSecond);
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SetFileTime(file_.Get(), nullptr, nullptr, &time);
    if (!file_.Close()) return ERROR_WRITE_FAULT;

    const std::wstring to = folder_.Path(name), aside = folder_.Path(name + ".old");
    const DWORD before = GetFileAttributesW(to.c_str());
    const bool replaces = before != INVALID_FILE_ATTRIBUTES;
    if (replaces) SetFileAttributesW(to.c_str(), FILE_ATTRIBUTE_NORMAL);
    DWORD error = MoveFileExW(path_.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING) ? 0 : GetLastError();
    const bool inUse = replaces && (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION);
    if (inUse && MoveFileExW(to.c_str(), aside.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        error = MoveFileExW(path_.c_str(), to.c_str(), 0) ? 0 : GetLastError();
        if (error == 0)
            DeleteFileW(aside.c_str());
        else
            MoveFileExW(aside.c_str(), to.c_str(), 0);
    }
    if (error == 0)
        path_.clear();
    else if (replaces)
        SetFileAttributesW(to.c_str(), before);
    return error;
}

} // namespace korlan
