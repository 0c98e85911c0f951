// Which files are programs. A program that is replaced stays one: an installed file is erased before the new one is
// unpacked, so what was erased is remembered by its path.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

namespace korlan {

mode_t ExecuteBits(const struct stat& status); // 0 for anything but a file
void NoteErased(const std::string& hostPath, const struct stat& status);
mode_t ErasedExecuteBits(const std::string& hostPath); // 0 when this process erased no program there

// By its beginning: a native program or a script. (Windows programs are started through another one, which reads them.)
bool IsProgram(std::string_view bytes);

} // namespace korlan
