#include "platform/FileSystem.h"

#include "platform/NamePattern.h"
#include "platform/RuntimeError.h"
#include "platform/TextCase.h"
#include "platform/linux/ExecuteBits.h"
#include "platform/linux/FileHandle.h"
#include "platform/linux/HostError.h"
#include "platform/linux/HostPath.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>

namespace korlan {
namespace {

struct stat StatusOf(const std::string& hostPath) {
    struct stat status {};
    if (stat(hostPath.c_str(), &status) != 0) RaiseHostError(errno, hostPath);
    return status;
}

// Reading never waits for the other end of a pipe, and only regular files are read. Most paths are spelled exactly, so
// the file is asked for before the names of its folder are.
FileHandle OpenRegularFile(const std::string& path, struct stat& status) {
    std::string hostPath = LikelyHostPath(path);
    FileHandle file(hostPath, O_RDONLY | O_NONBLOCK);
    if (!file && errno == ENOENT) {
        hostPath = HostPath(path);
        file = FileHandle(hostPath, O_RDONLY | O_NONBLOCK);
    }
    if (!file || fstat(file.Descriptor(), &status) != 0) RaiseHostError(errno, hostPath);
    if (!S_ISREG(status.st_mode)) throw RuntimeError(kErrPathAccess);
    return file;
}

// --- Lists of names --------------------------------------------------------------------------------------------------

// No path can say a name that holds a backslash or ends in a blank or a dot.
bool IsNormalFile(int folder, std::string_view name) {
    if (name.find('\\') != std::string_view::npos || name.ends_with(' ') || name.ends_with('.')) return false;
    struct stat status {};
    return fstatat(folder, name.data(), &status, 0) == 0 && S_ISREG(status.st_mode);
}

// The normal files of a folder that match, sorted without regard to case. An errno value when it cannot be read.
int ListMatching(const std::string& hostFolder, std::string_view foldedPattern, std::vector<std::string>& names) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(hostFolder.c_str()), closedir);
    if (!folder) return errno;
    std::vector<std::pair<std::string, std::string>> sorted; // upper case, spelling
    while (const dirent* entry = readdir(folder.get())) {
        std::string folded = UpperCase(entry->d_name);
        if (MatchesNamePattern(folded, foldedPattern) && IsNormalFile(dirfd(folder.get()), entry->d_name))
            sorted.emplace_back(std::move(folded), entry->d_name);
    }
    std::sort(sorted.begin(), sorted.end());
    for (auto& [folded, spelling] : sorted) names.push_back(std::move(spelling));
    return 0;
}

} // namespace

std::string FindNormalFile(const std::string& pattern) {
    const std::size_t start = pattern.find_last_of("\\/:") + 1; // npos + 1 is 0
    std::string name = pattern.substr(start);
    try {
        if (name.find_first_of("*?") == std::string::npos) {
            const std::string hostPath = HostPath(pattern);
            struct stat status {};
            if (stat(hostPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
            return hostPath.substr(hostPath.rfind('/') + 1);
        }
        const std::string folder = pattern.substr(0, start);
        std::vector<std::string> names;
        ListMatching(HostPath(folder.empty() ? "." : folder), name == "*.*" ? "*" : UpperCase(name), names);
        return names.empty() ? std::string() : names.front();
    } catch (const RuntimeError&) {
        return {};
    }
}

std::vector<std::string> ListNormalFiles(const std::string& folder) {
    std::vector<std::string> names;
    const std::string hostFolder = HostPath(folder);
    const int error = ListMatching(hostFolder, "*", names);
    if (error == EACCES) RaiseHostError(error, hostFolder);
    if (error != 0) throw RuntimeError(kErrPathNotFound);
    return names;
}

void SetAttributesNormal(const std::string& path) {
    const std::string hostPath = HostPath(path);
    struct stat status {};
    if (lstat(hostPath.c_str(), &status) != 0) RaiseHostError(errno, hostPath);
    if (S_ISLNK(status.st_mode) || (status.st_mode & S_IWUSR) != 0) return; // what a link names stays as it is
    if (chmod(hostPath.c_str(), (status.st_mode & 07777) | S_IWUSR) != 0) RaiseHostError(errno, hostPath);
}

bool EraseFile(const std::string& path) {
    try {
        const std::string hostPath = HostPath(path);
        struct stat status {};
        if (lstat(hostPath.c_str(), &status) != 0 || IsReadOnly(status)) return false;
        if (unlink(hostPath.c_str()) != 0) return false; // refuses folders
        NoteErased(hostPath, status);
        return true;
    } catch (const RuntimeError&) {
        return false;
    }
}

std::int64_t FileLength(const std::string& path) {
    const struct stat status = StatusOf(HostPath(path));
    if (S_ISDIR(status.st_mode)) throw RuntimeError(kErrPathAccess);
    return status.st_size;
}

FileLook LookAtFile(const std::string& path) {
    struct stat status {};
    OpenRegularFile(path, status);
    return {TicksOf(status.st_mtim.tv_sec) + status.st_mtim.tv_nsec / 100, true}; // none is hidden
}

// --- Folders ---------------------------------------------------------------------------------------------------------

bool FolderExists(const std::string& path) {
    try {
        struct stat status {};
        return !path.empty() && stat(HostPath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    } catch (const RuntimeError&) {
        return false;
    }
}

void CreateOneFolder(const std::string& path) {
    const std::string hostPath = HostPath(path);
    if (mkdir(hostPath.c_str(), 0777) == 0) return;
    if (errno == EEXIST) throw RuntimeError(kErrPathAccess);
    if (errno == ENOENT) throw RuntimeError(kErrPathNotFound);
    RaiseHostError(errno, hostPath);
}

void TryFolder(const std::string& path) {
    if (path.empty()) throw RuntimeError(kErrPathNotFound); // to HostPath it would be the folder we are in
    const FileHandle before(".", O_PATH | O_DIRECTORY);
    const std::string hostPath = HostPath(path);
    if (chdir(hostPath.c_str()) == 0 && fchdir(before.Descriptor()) == 0) return;
    if (errno == ENOENT) throw RuntimeError(kErrPathNotFound);
    RaiseHostError(errno, hostPath);
}

// --- Contents --------------------------------------------------------------------------------------------------------

struct OutputFile::Impl {
    std::string hostPath;
    FileHandle file;
    Mode mode = Mode::Create;
    off_t oldLength = -1; // unknown; no file is ever cut to that
    std::string buffer;

    void Flush() {
        const int error = WriteAll(file.Descriptor(), buffer.data(), buffer.size());
        buffer.clear();
        if (error != 0) RaiseHostError(error, hostPath);
    }
};

OutputFile::OutputFile(const std::string& path, Mode mode) : impl_(std::make_unique<Impl>()) {
    impl_->hostPath = HostPath(path);
    impl_->mode = mode;
    struct stat status {};
    if (stat(impl_->hostPath.c_str(), &status) == 0 && IsReadOnly(status)) throw RuntimeError(kErrPathAccess);
    impl_->file =
        FileHandle(impl_->hostPath, O_WRONLY | O_CREAT | O_NONBLOCK | (mode == Mode::Append ? O_APPEND : O_TRUNC));
    if (!impl_->file) RaiseHostError(errno, impl_->hostPath);
    if (fstat(impl_->file.Descriptor(), &status) == 0) impl_->oldLength = status.st_size;
}

OutputFile::~OutputFile() {
    if (impl_->file && impl_->mode == Mode::Append && ftruncate(impl_->file.Descriptor(), impl_->oldLength) == 0)
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
    const int writeError = WriteAll(impl_->file.Descriptor(), impl_->buffer.data(), impl_->buffer.size());
    impl_->buffer.clear();
    const int closeError = impl_->file.Close();
    if (const int error = writeError != 0 ? writeError : closeError; error != 0) RaiseHostError(error, impl_->hostPath);
}

std::string ReadFilePart(const std::string& path, std::uint64_t offset, std::size_t count) {
    struct stat status {};
    const FileHandle file = OpenRegularFile(path, status);
    const auto length = static_cast<std::uint64_t>(status.st_size);
    std::string bytes(static_cast<std::size_t>(std::min<std::uint64_t>(count, length > offset ? length - offset : 0)),
                      '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got =
            pread(file.Descriptor(), &bytes[done], bytes.size() - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) RaiseHostError(errno, path);
        if (got == 0) break; // it has become shorter
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return bytes;
}

void SyncFileSystem(const std::string& path) {
    try {
        const FileHandle file(HostPath(path), O_RDONLY | O_NONBLOCK);
        if (file && syncfs(file.Descriptor()) == 0) return;
    } catch (const RuntimeError&) { // no such drive
    }
    sync();
}

} // namespace korlan
