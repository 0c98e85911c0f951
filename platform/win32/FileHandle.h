// One open file of the system. Closes at its end. And paths as the file calls take them.
#pragma once

#include "platform/win32/Wide.h"

#include <utility>

namespace korlan {

// The whole path, in the form that has no limit of 260 characters where it needs it. Raises 76 on a path with a zero.
std::wstring FilePath(const std::string& path);

class FileHandle {
public:
    FileHandle() = default;
    FileHandle(const std::wstring& path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL)
        : handle_(CreateFileW(path.c_str(), access, kShareAll, nullptr, disposition, flags, nullptr)) {}
    FileHandle(FileHandle&& other) noexcept : handle_(other.Release()) {}
    FileHandle& operator=(FileHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~FileHandle() { Close(); }

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle_; }
    HANDLE Release() { return std::exchange(handle_, INVALID_HANDLE_VALUE); }
    bool Close() { // false when the last writes failed
        const HANDLE handle = Release();
        return handle == INVALID_HANDLE_VALUE || CloseHandle(handle);
    }

    bool Write(std::string_view bytes) const;
    std::string ReadAt(std::uint64_t offset, std::size_t count) const; // as many of the bytes as there are

private:
    static constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

} // namespace korlan
