// Where the suite's library itself lies.
#pragma once

#include <filesystem>

namespace suite {

std::filesystem::path OwnFolder(); // empty when it cannot be told

} // namespace suite
