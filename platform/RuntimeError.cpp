#include "platform/RuntimeError.h"

namespace korlan {
namespace {

const char* UsualText(std::int32_t number) {
    switch (number) {
    case kErrInvalidCall: return "Invalid procedure call or argument";
    case kErrOverflow: return "Overflow";
    case kErrSubscript: return "Subscript out of range";
    case kErrTypeMismatch: return "Type mismatch";
    case kErrFileNotFound: return "File not found";
    case kErrDeviceIo: return "Device I/O error";
    case kErrDiskFull: return "Disk full";
    case kErrPastEndOfFile: return "Input past end of file";
    case kErrPermissionDenied: return "Permission denied";
    case kErrPathAccess: return "Path/File access error";
    case kErrPathNotFound: return "Path not found";
    case kErrObjectNotSet: return "Object variable not set";
    case kErrDeliberateAbort: return "raised by the program itself";
    default: return "";
    }
}

} // namespace

RuntimeError::RuntimeError(std::int32_t number) : RuntimeError(number, UsualText(number)) {}

} // namespace korlan
