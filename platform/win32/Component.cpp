#include "platform/Component.h"

#include "platform/RuntimeError.h"
#include "platform/win32/Com.h"
#include "platform/win32/Wide.h"

namespace korlan {
namespace {

// Null when the file is missing or no type library. Registers nothing.
ComPtr<ITypeLib> Load(const std::string& path) {
    StartCom();
    ITypeLib* library = nullptr;
    LoadTypeLibEx(Wide(path).c_str(), REGKIND_NONE, &library);
    return ComPtr<ITypeLib>(library);
}

} // namespace

bool LoadAndRegisterTypeLib(const std::string& path) {
    const ComPtr<ITypeLib> library = Load(path);
    if (!library) return false;
    std::wstring file = Wide(path), noHelp;
    return SUCCEEDED(RegisterTypeLib(library.get(), file.data(), noHelp.data()));
}

TypeLibraryInfo DescribeTypeLib(const std::string& path) {
    const ComPtr<ITypeLib> library = Load(path);
    TLIBATTR* attributes = nullptr;
    if (!library || FAILED(library->GetLibAttr(&attributes))) throw RuntimeError(kErrFileNotFound);
    constexpr int kIdentifierSize = 39; // "{...}" and its end
    std::wstring identifier(kIdentifierSize, 0);
    StringFromGUID2(attributes->guid, identifier.data(), kIdentifierSize);
    TypeLibraryInfo info{Narrow(identifier.c_str()), attributes->wMajorVerNum, attributes->wMinorVerNum,
                         static_cast<std::int32_t>(attributes->lcid)};
    library->ReleaseTLibAttr(attributes);
    return info;
}

bool UnregisterTypeLib(const TypeLibraryInfo& library) {
    GUID identifier{};
    if (FAILED(CLSIDFromString(Wide(library.identifier).c_str(), &identifier))) return false;
    UnRegisterTypeLib(identifier, static_cast<WORD>(library.majorVersion), static_cast<WORD>(library.minorVersion),
                      static_cast<LCID>(library.locale), SYS_WIN32); // kept: its result is ignored
    return true;
}

} // namespace korlan
