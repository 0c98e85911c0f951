#include "publisher/Files.h"

#include "platform/RuntimeError.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace korlan::publisher {

namespace fs = std::filesystem;

namespace {
constexpr const char* kScratchPrefix = ".klnpub-";
}

void FailWithSystemError(const std::string& what, int error) {
    throw RuntimeError(kErrDeviceIo, what + ": " + std::strerror(error));
}

ScratchFolder::ScratchFolder(const fs::path& parent) {
    std::string name = (parent / (std::string(kScratchPrefix) + "XXXXXX")).string();
    if (mkdtemp(name.data()) == nullptr) FailWithSystemError("cannot write in " + parent.string(), errno);
    path_ = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

FolderLock::FolderLock(const fs::path& folder) : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (folder_ < 0) FailWithSystemError("cannot open " + folder.string(), errno);
    if (flock(folder_, LOCK_EX | LOCK_NB) != 0) {
        close(folder_);
        throw RuntimeError(kErrPermissionDenied, "another publisher is at work in " + folder.string());
    }
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(folder, ignored))
        if (entry.path().filename().string().starts_with(kScratchPrefix)) fs::remove_all(entry.path(), ignored);
}

FolderLock::~FolderLock() {
    close(folder_);
}

void WriteFile(const fs::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file || chmod(path.c_str(), 0644) != 0) FailWithSystemError("cannot write " + path.string(), errno);
}

void SyncFile(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 || fsync(file) != 0) {
        const int error = errno;
        if (file >= 0) close(file);
        FailWithSystemError("cannot write " + path.string() + " to the disk", error);
    }
    close(file);
}

void MoveFile(const fs::path& from, const fs::path& to) {
    if (rename(from.c_str(), to.c_str()) != 0) FailWithSystemError("cannot write " + to.string(), errno);
}

std::int64_t ModifiedTime(const fs::path& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0) FailWithSystemError("cannot read " + file.string(), errno);
    return status.st_mtim.tv_sec;
}

void RequireFolder(const fs::path& folder) {
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) throw RuntimeError(kErrPathNotFound, folder.string() + " is no folder");
}

} // namespace korlan::publisher
