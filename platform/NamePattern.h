// Names of files against a pattern, the same on every host.
#pragma once

#include <string_view>

namespace korlan {

// "*" is any run of characters, "?" any one. Both texts are UTF-8 in upper case. The work is bounded by the product of
// the lengths.
bool MatchesNamePattern(std::string_view name, std::string_view pattern);

} // namespace korlan
