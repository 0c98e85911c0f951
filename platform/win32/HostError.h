// The one place where an error of the system becomes a run-time error.
#pragma once

#include <cstdint>
#include <string>

namespace korlan {

// `error` is what GetLastError says of a call on `path`.
[[noreturn]] void RaiseHostError(std::uint32_t error, const std::wstring& path);

} // namespace korlan
