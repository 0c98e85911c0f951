#include "platform/linux/HostError.h"

#include "platform/RuntimeError.h"

#include <sys/stat.h>

#include <cerrno>

namespace korlan {
namespace {

bool FolderOfIsThere(const std::string& hostPath) {
    const std::size_t slash = hostPath.find_last_not_of('/') == std::string::npos
                                  ? std::string::npos
                                  : hostPath.rfind('/', hostPath.find_last_not_of('/'));
    if (slash == std::string::npos) return true;
    struct stat status {};
    return stat(hostPath.substr(0, slash + 1).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::int32_t ErrorNumberOf(int error, const std::string& hostPath) {
    switch (error) {
    case ENOENT: return FolderOfIsThere(hostPath) ? kErrFileNotFound : kErrPathNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP: return kErrPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY: return kErrPermissionDenied;
    case EISDIR:
    case ENXIO:
    case ENOTEMPTY: return kErrPathAccess;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: return kErrDiskFull;
    default: return kErrDeviceIo;
    }
}

} // namespace

void RaiseHostError(int error, const std::string& hostPath) {
    throw RuntimeError(ErrorNumberOf(error, hostPath));
}

} // namespace korlan
