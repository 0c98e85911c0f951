// Comparison of names without regard to case, as the file system of Windows does it: upper case of each character
// alone.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

// The name with every letter in upper case; bytes that are no UTF-8 stay as they are.
std::string FoldCase(std::string_view utf8);

} // namespace korlan
