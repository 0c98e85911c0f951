// The system's own disk clean-up handler, driven as the system's disk clean-up would.
#include "platform/CacheHandler.h"

#include "platform/RuntimeError.h"
#include "platform/win32/Com.h"
#include "platform/win32/Wide.h"

#include <emptyvc.h>
#include <shlobj.h>

namespace korlan {
namespace {

constexpr const wchar_t* kHandlerKey =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\VolumeCaches\\Internet Cache Files";

GUID GuidOf(const wchar_t* text) {
    GUID guid{};
    CLSIDFromString(text, &guid);
    return guid;
}

void Require(HRESULT result, const char* what) {
    if (FAILED(result) && result != E_ABORT) // ended by the callback
        throw RuntimeError(static_cast<std::int32_t>(result), std::string("The clean-up handler failed: ") + what);
}

// Passes what the handler reports to the program. Lives on the stack of the call, so nobody counts its references.
class CallbackObject : public IEmptyVolumeCacheCallBack {
public:
    explicit CallbackObject(CacheCallback& callback) : callback_(callback) {}
    virtual ~CallbackObject() = default;

    STDMETHODIMP QueryInterface(REFIID identifier, void** object) override {
        static const GUID kCallback = GuidOf(L"{6E793361-73C6-11D0-8469-00AA00442901}");
        const bool known = identifier == IID_IUnknown || identifier == kCallback;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP ScanProgress(DWORDLONG used, DWORD, LPCWSTR) override {
        return callback_.ScanProgress(static_cast<std::int64_t>(used)) == 0 ? S_OK : E_ABORT;
    }
    STDMETHODIMP PurgeProgress(DWORDLONG freed, DWORDLONG toFree, DWORD, LPCWSTR) override {
        const auto signedFreed = static_cast<std::int64_t>(freed), signedToFree = static_cast<std::int64_t>(toFree);
        return callback_.PurgeProgress(signedFreed, signedToFree) == 0 ? S_OK : E_ABORT;
    }

private:
    CacheCallback& callback_;
};

class SystemCacheHandler : public CacheHandler {
public:
    explicit SystemCacheHandler(IEmptyVolumeCache* handler) : handler_(handler) {}

    void Initialize(const std::string& volume) override {
        HKEY key = nullptr;
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, kHandlerKey, 0, KEY_READ, &key);
        LPWSTR displayName = nullptr, description = nullptr;
        DWORD flags = 0;
        const HRESULT result = handler_->Initialize(key, Wide(volume).c_str(), &displayName, &description, &flags);
        CoTaskMemFree(description);
        CoTaskMemFree(displayName);
        if (key) RegCloseKey(key);
        Require(result, "Initialize");
    }

    std::int64_t GetSpaceUsed(CacheCallback& callback) override {
        CallbackObject object(callback);
        DWORDLONG used = 0;
        Require(handler_->GetSpaceUsed(&used, &object), "GetSpaceUsed");
        return static_cast<std::int64_t>(used);
    }

    void Purge(std::int64_t spaceToFree, CacheCallback& callback) override {
        CallbackObject object(callback);
        Require(handler_->Purge(static_cast<DWORDLONG>(spaceToFree), &object), "Purge");
    }

private:
    ComPtr<IEmptyVolumeCache> handler_;
};

} // namespace

std::unique_ptr<CacheHandler> CreateCacheHandlerObject(const std::string& classId) {
    StartCom();
    IEmptyVolumeCache* handler = nullptr;
    CoCreateInstance(GuidOf(Wide(classId).c_str()), nullptr, CLSCTX_INPROC_SERVER,
                     GuidOf(L"{8FCE5227-04DA-11d1-A004-00805F8ABE06}"), reinterpret_cast<void**>(&handler));
    if (!handler) return nullptr;
    return std::make_unique<SystemCacheHandler>(handler);
}

std::string InternetCacheFolder() {
    LPITEMIDLIST list = nullptr;
    std::wstring path(MAX_PATH, 0);
    if (FAILED(SHGetSpecialFolderLocation(nullptr, CSIDL_INTERNET_CACHE, &list))) return {};
    const bool told = SHGetPathFromIDListW(list, path.data());
    CoTaskMemFree(list);
    return told ? Narrow(path.c_str()) : std::string();
}

bool CacheHandlerKeyOpens() {
    HKEY key = nullptr;
    const bool opens = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kHandlerKey, 0, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS;
    if (opens) RegCloseKey(key);
    return opens; // kept: a user without the rights of an administrator skips the initialisation
}

} // namespace korlan
