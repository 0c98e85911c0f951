// Upper and lower case of UTF-8 text, each character alone as Windows does it, whatever the user's locale. Bytes that
// are no UTF-8 stay as they are.
#pragma once

#include <string>
#include <string_view>

namespace korlan {

std::string UpperCase(std::string_view utf8); // also what names of files are compared by
std::string LowerCase(std::string_view utf8);

} // namespace korlan
