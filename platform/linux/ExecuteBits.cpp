#include "platform/linux/ExecuteBits.h"

#include "platform/TextCase.h"

#include <map>

namespace korlan {
namespace {

std::map<std::string, mode_t> erased; // by the path in upper case

} // namespace

mode_t ExecuteBits(const struct stat& status) {
    return S_ISREG(status.st_mode) ? status.st_mode & 0111 : 0;
}

void NoteErased(const std::string& hostPath, const struct stat& status) {
    if (const mode_t bits = ExecuteBits(status); bits != 0)
        erased[UpperCase(hostPath)] = bits;
    else if (!erased.empty())
        erased.erase(UpperCase(hostPath));
}

mode_t ErasedExecuteBits(const std::string& hostPath) {
    const auto found = erased.empty() ? erased.end() : erased.find(UpperCase(hostPath));
    return found == erased.end() ? 0 : found->second;
}

bool IsProgram(std::string_view bytes) {
    return bytes.starts_with("\x7F"
                             "ELF") ||
           bytes.starts_with("#!");
}

} // namespace korlan
