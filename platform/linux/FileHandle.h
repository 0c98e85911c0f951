// One open file of the host. Closes at its end.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace korlan {

class FileHandle {
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
    FileHandle(const std::string& hostPath, int flags, mode_t mode = 0666)
        : descriptor_(open(hostPath.c_str(), flags | O_CLOEXEC, mode)) {}
    FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileHandle() { Close(); }

    explicit operator bool() const { return descriptor_ >= 0; }
    int Descriptor() const { return descriptor_; }
    int Release() { return std::exchange(descriptor_, -1); }
    int Close() { // 0, or what the system reports of the last writes
        const int descriptor = Release();
        return descriptor >= 0 && close(descriptor) != 0 ? errno : 0;
    }

private:
    int descriptor_ = -1;
};

// Writes all of it; 0 or the errno value.
inline int WriteAll(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return 0;
}

// True when the file is marked read-only. The mode bits are asked, not the rights: the administrator may write to
// anything here, but Windows refuses a read-only file to everybody.
inline bool IsReadOnly(const struct stat& status) {
    return S_ISREG(status.st_mode) && (status.st_mode & S_IWUSR) == 0;
}

} // namespace korlan
