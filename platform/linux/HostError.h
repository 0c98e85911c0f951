// Errors of the host as errors of the program, for every procedure of this back end.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// Raises the RuntimeError that `error` (an errno value) stands for. `hostPath` is the file it came from: a missing file
// is told from a missing folder by looking whether its folder is there.
[[noreturn]] void RaiseHostError(int error, const std::string& hostPath);

} // namespace korlan
