// Kinds of files by the extension of their name: the text after its first "." (the whole name without one), without
// regard to case. A.B.SPC therefore has the extension B.SPC and is no model file. `index` is a position in
// Tables.FileArray; a wrong one raises 9.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Kinds of library, as everything counts them.
inline constexpr std::int32_t kPartKind = 1, kSymbolKind = 2, kPackageKind = 3, kPadstackKind = 4;

std::string FileExtension(const std::string& fileName); // upper-cased

bool CheckSPCFile(std::int32_t index);     // simulation models
bool CheckLibPartFile(std::int32_t index); // part libraries
// Symbol, package and padstack libraries; sets Flags.LibElementKind to the kind, else to 0.
bool CheckOtherLibFile(std::int32_t index);

} // namespace korlan
