#include "platform/DatabaseHost.h"
#include "platform/win32/DaoDatabase.h"
#include "platform/win32/Wide.h"

namespace korlan {

// A catalogue comes from the network and has no connect string: it is never given to the engine. What has one is the
// suite's own and is opened by the engine, the only one that may write to it.
std::unique_ptr<Database> OpenEngineDatabase(std::string_view, const std::string& path, bool exclusive, bool readOnly,
                                             const std::string& connect) {
    return connect.empty() ? nullptr : OpenDaoDatabase(path, exclusive, readOnly, connect);
}

bool DecodeCodePage(unsigned codePage, std::string_view bytes, std::string& out) {
    const int size = static_cast<int>(bytes.size());
    std::wstring wide(bytes.size(), 0);
    const int length = MultiByteToWideChar(codePage, 0, bytes.data(), size, wide.data(), size);
    if (length == 0 && size > 0) return false;
    out += Narrow(std::wstring_view(wide).substr(0, static_cast<std::size_t>(length)));
    return true;
}

} // namespace korlan
