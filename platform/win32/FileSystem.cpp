#include "platform/FileSystem.h"

#include "platform/NamePattern.h"
#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/win32/FileHandle.h"
#include "platform/win32/HostError.h"

#include <algorithm>

namespace korlan {

std::wstring FilePath(const std::string& path) {
    if (path.find('\0') != std::string::npos) throw RuntimeError(kErrPathNotFound);
    std::wstring wide = Wide(path);
    constexpr std::size_t kLongestPlain = MAX_PATH - 14; // a folder must leave room for a short name
    if (wide.size() < kLongestPlain || wide.starts_with(L"\\\\?\\")) return wide;
    std::wstring whole(GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), 0);
    whole.resize(GetFullPathNameW(wide.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr));
    return whole.starts_with(L"\\\\") ? L"\\\\?\\UNC" + whole.substr(1) : L"\\\\?\\" + whole;
}

bool FileHandle::Write(std::string_view bytes) const {
    DWORD written = 0;
    return bytes.empty() || (WriteFile(handle_, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
                             written == bytes.size());
}

std::string FileHandle::ReadAt(std::uint64_t offset, std::size_t count) const {
    std::string bytes(count, '\0');
    std::size_t done = 0;
    while (done < count) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset + done);
        place.OffsetHigh = static_cast<DWORD>((offset + done) >> 32);
        DWORD got = 0;
        if (!ReadFile(handle_, &bytes[done], static_cast<DWORD>(count - done), &got, &place) || got == 0) break;
        done += got;
    }
    bytes.resize(done);
    return bytes;
}

namespace {

// Opening a device reads nothing; only regular files are read.
FileHandle OpenRegularFile(const std::wstring& path) {
    FileHandle file(path, GENERIC_READ, OPEN_EXISTING);
    if (!file) RaiseHostError(GetLastError(), path);
    if (GetFileType(file.Get()) != FILE_TYPE_DISK) throw RuntimeError(kErrPathAccess);
    return file;
}

std::uint64_t LengthOf(const FileHandle& file, const std::wstring& path) {
    LARGE_INTEGER length{};
    if (!GetFileSizeEx(file.Get(), &length)) RaiseHostError(GetLastError(), path);
    return static_cast<std::uint64_t>(length.QuadPart);
}

constexpr DWORD kNotNormal = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

// The normal files of a folder that match, sorted without regard to case; what FindFirstFile says when it fails.
DWORD ListMatching(const std::wstring& folder, std::string_view foldedPattern, std::vector<std::string>& names) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return GetLastError();
    std::vector<std::pair<std::string, std::string>> sorted; // upper case, spelling
    do {
        const std::string name = Narrow(found.cFileName);
        std::string folded = UpperCase(name);
        if ((found.dwFileAttributes & kNotNormal) == 0 && MatchesNamePattern(folded, foldedPattern))
            sorted.emplace_back(std::move(folded), name);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    std::sort(sorted.begin(), sorted.end());
    for (auto& [folded, spelling] : sorted) names.push_back(std::move(spelling));
    return ERROR_SUCCESS;
}

} // namespace

std::string FindNormalFile(const std::string& pattern) {
    const std::size_t start = pattern.find_last_of("\\/:") + 1; // npos + 1 is 0
    std::string name = UpperCase(std::string_view(pattern).substr(start));
    if (name == "*.*") name = "*";
    if (name.find_first_of("*?") == std::string::npos) name.resize(name.find_last_not_of(" .") + 1); // as in any path
    if (name.empty() || pattern.find('\0') != std::string::npos) return {};
    std::vector<std::string> names;
    ListMatching(FilePath(pattern.substr(0, start)), name, names);
    return names.empty() ? std::string() : names.front();
}

std::vector<std::string> ListNormalFiles(const std::string& folder) {
    std::vector<std::string> names;
    const std::wstring path = FilePath(folder);
    const DWORD error = ListMatching(path.ends_with(L'\\') ? path : path + L'\\', "*", names);
    if (error == ERROR_FILE_NOT_FOUND) return names; // the top of a drive without files
    if (error == ERROR_ACCESS_DENIED) throw RuntimeError(kErrPermissionDenied);
    if (error != ERROR_SUCCESS) throw RuntimeError(kErrPathNotFound);
    return names;
}

void SetAttributesNormal(const std::string& path) {
    const std::wstring wide = FilePath(path);
    if (!SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL)) RaiseHostError(GetLastError(), wide);
}

bool EraseFile(const std::string& path) {
    try {
        return DeleteFileW(FilePath(path).c_str());
    } catch (const RuntimeError&) {
        return false;
    }
}

std::int64_t FileLength(const std::string& path) {
    const std::wstring wide = FilePath(path);
    return static_cast<std::int64_t>(LengthOf(OpenRegularFile(wide), wide));
}

FileLook LookAtFile(const std::string& path) {
    const std::wstring wide = FilePath(path);
    BY_HANDLE_FILE_INFORMATION file{};
    if (!GetFileInformationByHandle(OpenRegularFile(wide).Get(), &file)) RaiseHostError(GetLastError(), wide);
    const std::uint64_t ticks =
        std::uint64_t{file.ftLastWriteTime.dwHighDateTime} << 32 | file.ftLastWriteTime.dwLowDateTime;
    return {static_cast<std::int64_t>(ticks), (file.dwFileAttributes & kNotNormal) == 0};
}

// --- Folders ---------------------------------------------------------------------------------------------------------

bool FolderExists(const std::string& path) {
    try {
        const DWORD attributes = GetFileAttributesW(FilePath(path).c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    } catch (const RuntimeError&) {
        return false;
    }
}

void CreateOneFolder(const std::string& path) {
    const std::wstring wide = FilePath(path);
    if (CreateDirectoryW(wide.c_str(), nullptr)) return;
    const DWORD error = GetLastError();
    RaiseHostError(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error, wide);
}

void TryFolder(const std::string& path) {
    std::wstring before(GetCurrentDirectoryW(0, nullptr), 0);
    before.resize(GetCurrentDirectoryW(static_cast<DWORD>(before.size()), before.data()));
    const std::wstring wide = FilePath(path);
    if (!wide.empty() && SetCurrentDirectoryW(wide.c_str()) && SetCurrentDirectoryW(before.c_str())) return;
    const DWORD error = wide.empty() ? ERROR_PATH_NOT_FOUND : GetLastError();
    RaiseHostError(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error, wide);
}

// --- Contents --------------------------------------------------------------------------------------------------------

struct OutputFile::Impl {
    std::wstring path;
    FileHandle file;
    Mode mode = Mode::Create;
    LARGE_INTEGER oldLength{};
    std::string buffer;

    void Flush() {
        const bool well = file.Write(buffer);
        const DWORD error = GetLastError();
        buffer.clear();
        if (!well) RaiseHostError(error, path);
    }
};

OutputFile::OutputFile(const std::string& path, Mode mode) : impl_(std::make_unique<Impl>()) {
    impl_->path = FilePath(path);
    impl_->mode = mode;
    // A hidden or system file keeps its attributes: an existing one is emptied, not created anew.
    impl_->file = FileHandle(impl_->path, GENERIC_WRITE, OPEN_ALWAYS);
    const HANDLE file = impl_->file.Get();
    if (impl_->file &&
        (mode == Mode::Append ? SetFilePointerEx(file, {}, &impl_->oldLength, FILE_END) : SetEndOfFile(file)))
        return;
    const DWORD error = GetLastError();
    RaiseHostError(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error, impl_->path); // it would be made
}

OutputFile::~OutputFile() {
    const HANDLE file = impl_->file.Get();
    if (impl_->file && impl_->mode == Mode::Append && SetFilePointerEx(file, impl_->oldLength, nullptr, FILE_BEGIN) &&
        SetEndOfFile(file))
        return;
    try {
        Close();
    } catch (const RuntimeError&) { // a destructor has nobody to tell; who wants to know calls Close
    }
}

void OutputFile::Write(std::string_view bytes) {
    constexpr std::size_t kBufferSize = std::size_t{64} * 1024;
    if (!impl_->file) throw RuntimeError(kErrDeviceIo);
    impl_->buffer += bytes;
    if (impl_->mode == Mode::Append || impl_->buffer.size() >= kBufferSize) impl_->Flush();
}

void OutputFile::Close() {
    if (!impl_->file) return;
    const FileHandle closing = std::move(impl_->file);
    const bool well = closing.Write(std::exchange(impl_->buffer, {}));
    if (!well) RaiseHostError(GetLastError(), impl_->path);
}

std::string ReadFilePart(const std::string& path, std::uint64_t offset, std::size_t count) {
    const std::wstring wide = FilePath(path);
    const FileHandle file = OpenRegularFile(wide);
    const std::uint64_t length = LengthOf(file, wide);
    const std::uint64_t rest = length > offset ? length - offset : 0;
    return file.ReadAt(offset, static_cast<std::size_t>(std::min<std::uint64_t>(count, rest)));
}

// Only an administrator may flush a whole volume. For everybody else the system writes out what it holds by itself.
void SyncFileSystem(const std::string& path) {
    if (path.size() < 2 || path[1] != ':') return;
    const FileHandle volume(L"\\\\.\\" + Wide(path.substr(0, 2)), GENERIC_WRITE, OPEN_EXISTING);
    if (volume) FlushFileBuffers(volume.Get());
}

} // namespace korlan
