#include "platform/win32/HostError.h"

#include "platform/RuntimeError.h"

#include <windows.h>

namespace korlan {
namespace {

// Refused are a folder and a read-only file for what they are, anything else for want of rights.
std::int32_t NumberOfRefusal(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool byKind = attributes != INVALID_FILE_ATTRIBUTES &&
                        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0;
    return byKind ? kErrPathAccess : kErrPermissionDenied;
}

bool FolderOfIsThere(const std::wstring& path) {
    const std::size_t end = path.find_last_of(L"\\/:", path.find_last_not_of(L"\\/"));
    if (end == std::wstring::npos) return true;
    const DWORD attributes = GetFileAttributesW(path.substr(0, end + 1).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::int32_t ErrorNumberOf(DWORD error, const std::wstring& path) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND: return FolderOfIsThere(path) ? kErrFileNotFound : kErrPathNotFound;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_DIRECTORY: return kErrPathNotFound;
    case ERROR_ACCESS_DENIED: return NumberOfRefusal(path);
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_WRITE_PROTECT: return kErrPermissionDenied;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
    case ERROR_DIR_NOT_EMPTY: return kErrPathAccess;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL: return kErrDiskFull;
    default: return kErrDeviceIo;
    }
}

} // namespace

void RaiseHostError(std::uint32_t error, const std::wstring& path) {
    throw RuntimeError(ErrorNumberOf(error, path));
}

} // namespace korlan
