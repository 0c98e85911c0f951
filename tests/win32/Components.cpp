// One in-process server for the components that Wine lacks: the clean-up handler of the internet cache, and a database
// engine. Registered with regsvr32, as the real ones are.
#include "tests/win32/Doubles.h"

#include <array>

namespace {

struct Component {
    const wchar_t* classId;
    const wchar_t* programId; // or null
    IUnknown* (*make)();
};

constexpr std::array<Component, 2> kComponents{{
    {L"{9B0EFD60-F7B0-11D0-BAEF-00C04FC308C9}", nullptr, doubles::MakeCacheHandler},
    {L"{0B5D2B2E-5B0C-4B57-9C4E-6D9C0F5D3A11}", L"DAO.DBEngine.35", doubles::MakeDaoEngine},
}};
constexpr const wchar_t* kHandlerKey =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\VolumeCaches\\Internet Cache Files";

HMODULE self = nullptr;

class Factory : public doubles::Counted<IClassFactory> {
public:
    explicit Factory(const Component& component) : Counted(IID_IClassFactory), component_(component) {}
    STDMETHODIMP CreateInstance(IUnknown*, REFIID wanted, void** object) override {
        IUnknown* made = component_.make();
        const HRESULT result = made->QueryInterface(wanted, object);
        made->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    const Component& component_;
};

void SetKey(HKEY root, const std::wstring& key, const std::wstring& value) {
    RegSetKeyValueW(root, key.c_str(), nullptr, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

} // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD, void*) {
    self = module;
    return TRUE;
}

HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID wanted, void** object) {
    for (const Component& component : kComponents) {
        if (doubles::Guid(component.classId) != classId) continue;
        auto* const factory = new Factory(component);
        const HRESULT result = factory->QueryInterface(wanted, object);
        factory->Release();
        return result;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT WINAPI DllRegisterServer() {
    std::wstring path(MAX_PATH, 0);
    path.resize(GetModuleFileNameW(self, path.data(), MAX_PATH));
    for (const Component& component : kComponents) {
        const std::wstring classId = component.classId;
        SetKey(HKEY_CLASSES_ROOT, L"CLSID\\" + classId + L"\\InprocServer32", path);
        if (component.programId) SetKey(HKEY_CLASSES_ROOT, std::wstring(component.programId) + L"\\CLSID", classId);
    }
    SetKey(HKEY_LOCAL_MACHINE, kHandlerKey, kComponents[0].classId);
    return S_OK;
}

HRESULT WINAPI DllUnregisterServer() {
    for (const Component& component : kComponents) {
        RegDeleteTreeW(HKEY_CLASSES_ROOT, (L"CLSID\\" + std::wstring(component.classId)).c_str());
        if (component.programId) RegDeleteTreeW(HKEY_CLASSES_ROOT, component.programId);
    }
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, kHandlerKey);
    return S_OK;
}
}
