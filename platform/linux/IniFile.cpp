#include "platform/IniFile.h"

#include "platform/Log.h"
#include "platform/RuntimeError.h"
#include "platform/linux/HostPath.h"
#include "platform/linux/ProfileFile.h"

#include <cerrno>

namespace korlan {
namespace {

enum SystemError : std::int32_t {
    kSystemFileNotFound = 2,
    kSystemPathNotFound = 3,
    kSystemAccessDenied = 5,
    kSystemWriteFault = 29,
    kSystemSharingViolation = 32,
    kSystemDiskFull = 112,
};

// A bare name lies in the Windows folder; "." says the current one.
std::string FullName(const std::string& file) {
    return file.find_first_of("\\/:") == std::string::npos ? "C:\\WINDOWS\\" + file : file;
}

std::int32_t SystemErrorOf(int error) {
    switch (error) {
    case 0: return 0;
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP: return kSystemPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EEXIST: return kSystemAccessDenied;
    case EBUSY:
    case ETXTBSY: return kSystemSharingViolation;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return kSystemDiskFull;
    default: return kSystemWriteFault;
    }
}

} // namespace

std::optional<std::string> ReadProfileValue(std::string_view section, std::string_view key, std::size_t bufferSize,
                                            const std::string& file) {
    try {
        if (!file.empty()) return ReadProfileFile(section, key, bufferSize, HostPath(FullName(file)));
    } catch (const RuntimeError&) { // no such drive or folder: no such file
    }
    return std::nullopt;
}

std::int32_t WriteProfileValue(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& file) {
    if (file.empty()) return kSystemAccessDenied;
    const std::string path = FullName(file);
    std::int32_t code = kSystemFileNotFound;
    try {
        if (DriveIsThere(path)) code = SystemErrorOf(WriteProfileFile(section, key, value, HostPath(path)));
    } catch (const RuntimeError&) {
        code = kSystemPathNotFound;
    }
    LogLine("setting [" + std::string(section) + "] " + std::string(key) + "=" + std::string(value) +
            (code == 0 ? "" : ": " + DescribeSystemError(code)));
    return code;
}

std::string DescribeSystemError(std::int32_t code) {
    switch (code) {
    case 0: return "The operation completed successfully.";
    case kSystemFileNotFound: return "The system cannot find the file specified.";
    case kSystemPathNotFound: return "The system cannot find the path specified.";
    case kSystemAccessDenied: return "Access is denied.";
    case kSystemWriteFault: return "The system cannot write to the specified device.";
    case kSystemSharingViolation:
        return "The process cannot access the file because it is being used by another process.";
    case kSystemDiskFull: return "There is not enough space on the disk.";
    default: return "System error " + std::to_string(code) + ".";
    }
}

} // namespace korlan
