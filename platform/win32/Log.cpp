#include "platform/Log.h"

#include "platform/win32/Wide.h"

#include <shlobj.h>

namespace korlan {

std::string LogFolder() {
    wchar_t folder[MAX_PATH] = {};
    const bool found = SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder));
    if (!found) return {};
    const std::wstring path = std::wstring(folder) + L"\\korlan"; // which nobody else may enter
    CreateDirectoryW(path.c_str(), nullptr);
    return CodePagePath(Narrow(path)).value_or("");
}

} // namespace korlan
