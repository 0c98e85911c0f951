// What Database.cpp asks of the back end.
#pragma once

#include "platform/Database.h"

#include <string_view>

namespace korlan {

// A database that the back end's own engine opens, whatever that is; null when the file is none of those.
std::unique_ptr<Database> OpenEngineDatabase(std::string_view startOfFile, const std::string& path, bool exclusive,
                                             bool readOnly, const std::string& connect);

// Appends the text as UTF-8; what stands for no character becomes U+FFFD. False, with `out` as it was, when the host
// does not know the code page.
bool DecodeCodePage(unsigned codePage, std::string_view bytes, std::string& out);

} // namespace korlan
