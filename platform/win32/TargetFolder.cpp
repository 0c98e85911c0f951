#include "platform/FileSystem.h"
#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/win32/FileHandle.h"
#include "platform/zip/ZipHost.h"
#include "platform/zip/ZipRules.h"

namespace korlan {
namespace {

// Names that the system takes for devices in every folder, whatever extension they have, and those it has no room for.
bool SystemRefuses(const std::string& name) {
    constexpr std::size_t kLongestName = 255; // UTF-16 units
    const std::string stem = UpperCase(name.substr(0, name.find('.')));
    const std::string plain = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const bool port = plain.size() == 4 && (plain.starts_with("COM") || plain.starts_with("LPT")) && plain[3] >= '0' &&
                      plain[3] <= '9';
    return port || plain == "CON" || plain == "PRN" || plain == "AUX" || plain == "NUL" || plain == "CONIN$" ||
           plain == "CONOUT$" || name.find_first_of("*?<>|\"") != std::string::npos || Wide(name).size() > kLongestName;
}

class HostTargetFolder : public TargetFolder {
public:
    explicit HostTargetFolder(std::string path) : path_(std::move(path)) {}
    std::wstring Path(const std::string& name) const { return FilePath(path_ + name); }
    TargetName Find(const std::string& name) const override;
    std::unique_ptr<NewFile> Begin(const std::string& spelling, bool executable) const override;
    void RemoveLeftOvers() const;

private:
    const std::string path_; // with its closing backslash
};

class HostNewFile : public NewFile {
public:
    HostNewFile(const HostTargetFolder& folder, std::string spelling);
    ~HostNewFile() override;
    HostNewFile(const HostNewFile&) = delete;
    HostNewFile& operator=(const HostNewFile&) = delete;

    bool Write(std::string_view bytes) override { return file_.Write(bytes); }
    bool Restart() override {
        return SetFilePointer(file_.Get(), 0, nullptr, FILE_BEGIN) == 0 && SetEndOfFile(file_.Get());
    }
    bool Install(std::int64_t modified) override;

private:
    const HostTargetFolder& folder_;
    const std::string spelling_;
    FileHandle file_;
    std::wstring path_; // "" when there is nothing to remove
};

// Makes the folder with its parents; what cannot be made shows when a file is.
void MakeFolders(const std::string& path) {
    if (HasParentComponent(path)) return;
    for (std::size_t end = path.find_first_of("\\/"); end != std::string::npos;
         end = path.find_first_of("\\/", end + 1))
        CreateDirectoryW(FilePath(path.substr(0, end)).c_str(), nullptr);
}

void HostTargetFolder::RemoveLeftOvers() const {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(Path(std::string(kTemporaryMember) + "*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do DeleteFileW(Path(Narrow(found.cFileName)).c_str());
    while (FindNextFileW(search, &found));
    FindClose(search);
}

TargetName HostTargetFolder::Find(const std::string& name) const {
    using Kind = TargetName::Kind;
    if (SystemRefuses(name)) return {Kind::Refused, name};
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(Path(name).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return {Kind::Free, name};
    FindClose(search);
    const bool folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return {folder ? Kind::Folder : Kind::File, Narrow(found.cFileName)};
}

std::unique_ptr<NewFile> HostTargetFolder::Begin(const std::string& spelling, bool) const {
    return std::make_unique<HostNewFile>(*this, spelling); // every file may run here
}

HostNewFile::HostNewFile(const HostTargetFolder& folder, std::string spelling)
    : folder_(folder), spelling_(std::move(spelling)) {
    static unsigned made = 0;
    do {
        path_ = folder.Path(std::string(kTemporaryMember) + std::to_string(GetCurrentProcessId()) + "-" +
                            std::to_string(++made));
        file_ = FileHandle(path_, GENERIC_WRITE, CREATE_NEW);
    } while (!file_ && GetLastError() == ERROR_FILE_EXISTS);
    if (!file_) path_.clear();
}

HostNewFile::~HostNewFile() {
    file_.Close();
    if (!path_.empty()) DeleteFileW(path_.c_str());
}

// A library that runs, this program's own among them, can be renamed but not replaced: it goes aside as NAME.old, which
// the next one of that name clears away.
bool HostNewFile::Install(std::int64_t modified) {
    const std::int64_t ticks = TicksOf(modified);
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SetFileTime(file_.Get(), nullptr, nullptr, &time);
    if (!file_ || !file_.Close()) return false;

    const std::wstring to = folder_.Path(spelling_), aside = folder_.Path(spelling_ + ".old");
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
    return error == 0;
}

} // namespace

std::unique_ptr<TargetFolder> OpenTargetFolder(const std::string& path) {
    try {
        auto folder = std::make_unique<HostTargetFolder>(path + "\\");
        MakeFolders(path + "\\");
        if (!FolderExists(path)) return nullptr;
        folder->RemoveLeftOvers();
        return folder;
    } catch (const RuntimeError&) { // a path that nothing can have
        return nullptr;
    }
}

} // namespace korlan
