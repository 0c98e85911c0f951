// Kinds of files by the extension of their name: the text after its first "." (the whole name without one), without
// regard to case. A.B.SPC therefore has the extension B.SPC and is no model file. `index` is a position in
// Tables.FileArray; a wrong one raises 9.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

std::string FileExtension(const std::string& fileName); // upper-cased

bool CheckSPCFile(std::int32_t index);     // simulation models
bool CheckLibPartFile(std::int32_t index); // part libraries
bool CheckOtherLibFile(
    std::int32_t index); // symbol, package, padstack libraries; sets Flags.LibElementKind to 2, 3, 4, else 0

} // namespace korlan
