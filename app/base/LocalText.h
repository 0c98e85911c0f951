// Texts by message identifier.
#pragma once

#include <string>

namespace korlan {

// The localised text of that identifier (decimal digits) with the outer blanks of the default; the default itself where
// the text library has none. Mind the order: text first, identifier second.
std::string GetLocalText(const std::string& defaultText, const std::string& identifier);

} // namespace korlan
