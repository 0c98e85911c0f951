#include "platform/Log.h"

#include "platform/win32/Wide.h"

#include <shlobj.h>

namespace korlan {

std::string StateFolder() {
    wchar_t folder[MAX_PATH] = {};
    const bool found = SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder));
    return found ? Narrow(folder) : std::string();
}

} // namespace korlan
